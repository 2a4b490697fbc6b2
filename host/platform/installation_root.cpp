#include "host/platform/installation_root.h"

#include "platform/installation_root.h"

#include <utility>

namespace {

std::string& installed()
{
    static std::string root;
    return root;
}

}  // namespace

void talvik::installInstallationRoot(std::string root)
{
    installed() = std::move(root);
}

std::string KEL_Utility::getKELRootEnv()
{
    return installed();
}
