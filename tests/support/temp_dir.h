#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

#include <stdlib.h>

namespace talvik::test {

/// A folder of the test's own, removed with everything in it when the test ends.
class TempDir {
public:
    TempDir()
    {
        std::string name = (std::filesystem::temp_directory_path() / "talvik-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("cannot make a folder like " + name);
        }
        path_ = name;
    }

    ~TempDir()
    {
        std::error_code ignored;  // a test that removed it itself is no failure
        std::filesystem::remove_all(path_, ignored);
    }

    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string path(const std::string& name) const { return (path_ / name).string(); }
    std::string path() const { return path_.string(); }

    /// Writes `text` into the file `name` and returns its path.
    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(path(name), std::ios::binary) << text;
        return path(name);
    }

    std::string read(const std::string& name) const
    {
        // In one piece: character by character, unoptimised and under a sanitizer, takes minutes
        // for the largest files.
        std::ostringstream text;
        text << std::ifstream(path(name), std::ios::binary).rdbuf();
        return text.str();
    }

private:
    std::filesystem::path path_;
};

}  // namespace talvik::test
