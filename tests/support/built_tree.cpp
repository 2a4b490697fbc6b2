// The one unit that knows where the tree lies: what another clone compiled of the rest is as good.
#include "tests/support/built_tree.h"

namespace talvik::test {

std::string sourceFile(const std::string& path)
{
    return TALVIK_SOURCE_DIR "/" + path;
}

std::vector<std::string> commandOf(const std::string& program)
{
    std::vector<std::string> words = {TALVIK_EMULATOR};
    words.push_back(TALVIK_BIN_DIR "/" + program);
    return words;
}

}  // namespace talvik::test
