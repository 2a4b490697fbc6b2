#pragma once

#include <optional>
#include <string>

namespace talvik {

/// The content of `path`, or nothing when there is no such file. Throws `StartupError` when it is
/// there and cannot be read.
std::optional<std::string> readFile(const std::string& path);

/// Makes `content` what `path` holds, readable by the owner only. When it returns the content
/// survives a power cut; cut short, the former content is still there in whole. Throws
/// `StartupError`.
void writeDurably(const std::string& path, const std::string& content);

/// Renames within one directory so that it survives a power cut. Throws `StartupError`.
void renameDurably(const std::string& from, const std::string& to);

/// Removes `path`; one that is not there is no failure. Throws `StartupError`.
void removeDurably(const std::string& path);

/// Makes `path` a directory of the owner's only (0700), parents included. Throws `StartupError`.
void makePrivateDirectory(const std::string& path);

}  // namespace talvik
