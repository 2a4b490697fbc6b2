#include "host/installation_paths.h"
#include "host/platform/device_config_file.h"
#include "host/startup_error.h"
#include "tools/command_line.h"
#include "tools/failure.h"
#include "tools/package_input.h"
#include "tools/package_names.h"
#include "tools/package_output.h"
#include "tools/package_reader.h"
#include "tools/trap_output.h"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <system_error>

namespace talvik::ctl {

namespace {

struct DumpOptions {
    std::string file = "-";
    std::string format = "auto";
    std::string device;
    OutputOptions output;
};

std::string contentOf(const std::string& file)
{
    std::string content;
    if (file == "-") {
        content = readCapture(std::cin);
    } else {
        errno = 0;
        std::ifstream in(file, std::ios::binary);
        if (!in || std::filesystem::is_directory(file)) {
            const int error = errno == 0 ? EISDIR : errno;
            throw StartupError("cannot read the capture " + file + ": " +
                               std::generic_category().message(error));
        }
        content = readCapture(in);
    }
    if (content.size() > kMaxCapture) {
        throw StartupError("the capture " + file + " is larger than " +
                           std::to_string(kMaxCapture >> 20U) + " MiB; cut it up");
    }
    return content;
}

Capture captureOf(const DumpOptions& options)
{
    const auto content = contentOf(options.file);
    const bool isHex =
        options.format == "hex" || (options.format == "auto" && looksLikeHex(content));
    return isHex ? bytesOfHex(content) : Capture{{content.begin(), content.end()}, "", ""};
}

/// The installation's own device configuration may be missing: then commands have no names.
PackageNames namesOf(const DumpOptions& options)
{
    if (!options.device.empty()) {
        return PackageNames(DeviceConfigFile::load(options.device));
    }
    const auto usual = InstallationPaths::ofThisProgram().configFile("talvik-device.xml");
    return std::filesystem::exists(usual) ? PackageNames(DeviceConfigFile::load(usual))
                                          : PackageNames();
}

/// Why the capture was not read to its end, if it was not.
std::optional<Failure> failureOf(const DumpOptions& options, const Capture& capture)
{
    const auto file = options.file == "-" ? "standard input" : options.file;
    if (!capture.refusal.empty()) {
        return Failure(Failure::Kind::Refused, file + ", " + capture.refusal,
                       capture.advice + "; what stands before it was read");
    }
    if (capture.bytes.empty()) {
        return Failure(Failure::Kind::Refused, file + " is empty: there is nothing in it",
                       "capture again, and look whether what makes the capture reports an error");
    }
    return std::nullopt;
}

int runDump(const DumpOptions& options)
{
    const auto names = namesOf(options);
    const auto capture = captureOf(options);
    const auto style = tableStyle(options.output);
    PackageText text(std::cout, names, style);
    PackageJson json(std::cout, names);
    PackageVisitor& visitor = options.output.json ? static_cast<PackageVisitor&>(json) : text;
    const bool good = readPackages(capture.bytes, visitor);
    std::cout.flush();
    const auto failure = failureOf(options, capture);
    if (failure && options.output.json) {
        std::cout << jsonLine(failureJson(*failure));
    } else if (failure) {
        std::cerr << failureText(*failure);
    }
    return good && !failure ? kExitGood : kExitBad;
}

void addDump(CLI::App& package, Action& action)
{
    auto options = std::make_shared<DumpOptions>();
    auto* dump = package.add_subcommand("dump", "Print captured message packages field by field");
    dump->add_option("FILE", options->file, "The capture; - for standard input")
        ->type_name("FILE")
        ->capture_default_str();
    dump->add_option("--format", options->format,
                     "How the packages are written: in bytes or in hexadecimal digits")
        ->type_name("auto|binary|hex")
        ->check(oneOf({"auto", "binary", "hex"}))
        ->capture_default_str();
    dump->add_option("--device", options->device,
                     "Device configuration with the command numbers, for their names; the "
                     "installation's own without it")
        ->type_name("FILE");
    addOutputOptions(*dump, options->output);
    addTableOptions(*dump, options->output);
    setHelp(
        *dump,
        {"Packages between agent and back end, as the codec reads them, one or several back to\n"
         "back, at most 64 MiB. Hexadecimal digits may have blanks, commas, colons and 0x\n"
         "between, or be the output of xxd, hexdump -C, od -t x1, tshark -x or tcpdump -X\n"
         "(bytes with their offsets). What cannot be read is named with its offset, and what\n"
         "can be read behind it is. With --json each package is a line, and so is what ends\n"
         "the reading.",
         "0 all packages are whole, 1 something cannot be read, 2 wrong usage or a file that\n"
         "cannot be read.",
         {"talvikctl package dump capture.bin", "xxd -p capture.bin | talvikctl package dump",
          "talvikctl package dump --format hex --json message.txt"}});
    onCommand(*dump, action, options->output, [options] { return runDump(*options); });
}

}  // namespace

void addPackageCommands(CLI::App& talvikctl, Action& action)
{
    auto* package = talvikctl.add_subcommand("package", "Messages between agent and back end");
    package->require_subcommand(1);
    setHelp(*package, {"", "", {"talvikctl package dump capture.bin"}});
    addDump(*package, action);
}

}  // namespace talvik::ctl
