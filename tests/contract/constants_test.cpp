#include "tests/contract/loaded_module.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string bytesOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace

TEST(ModuleConstants, TheMappedLoopbackAddressIsInTheImage)
{
    const auto image = bytesOf(talvik::contract::LoadedModule::file());

    ASSERT_FALSE(image.empty());
    EXPECT_NE(image.find(std::string("::ffff:127.0.0.1") + '\0'), std::string::npos);
}
