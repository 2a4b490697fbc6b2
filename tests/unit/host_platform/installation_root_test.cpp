#include "platform/installation_root.h"

#include "host/platform/installation_root.h"

#include <gtest/gtest.h>

TEST(InstallationRoot, IsWhatTheHostInstalled)
{
    talvik::installInstallationRoot("/opt/product");

    EXPECT_EQ(KEL_Utility::getKELRootEnv(), "/opt/product");

    talvik::installInstallationRoot("");

    EXPECT_EQ(KEL_Utility::getKELRootEnv(), "");
}
