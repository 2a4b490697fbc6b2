#include "host/module_file.h"

#include <elf.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace talvik {

namespace {

#if defined(__aarch64__)
constexpr std::uint16_t kMachine = EM_AARCH64;
#elif defined(__x86_64__)
constexpr std::uint16_t kMachine = EM_X86_64;
#else
#error "say here which ELF machine this is"
#endif

/// The file's bytes, read where its headers point.
class Image {
public:
    explicit Image(const std::string& path)
        : file_(path, std::ios::binary),
          size_(std::filesystem::file_size(path))
    {
    }

    bool isOpen() const { return file_.is_open(); }
    bool isEmpty() const { return size_ == 0; }

    bool holds(std::uint64_t offset, std::uint64_t count) const
    {
        return offset <= size_ && count <= size_ - offset;
    }

    template <typename Record>
    bool read(std::uint64_t offset, Record& record)
    {
        return holds(offset, sizeof(record)) && file_.seekg(static_cast<std::streamoff>(offset)) &&
               file_.read(reinterpret_cast<char*>(&record), sizeof(record));
    }

private:
    std::ifstream file_;
    std::uint64_t size_;
};

std::string nameOf(std::uint16_t machine)
{
    switch (machine) {
    case EM_386:
        return "x86";
    case EM_X86_64:
        return "x86-64";
    case EM_ARM:
        return "ARM";
    case EM_AARCH64:
        return "AArch64";
    default:
        return "ELF machine " + std::to_string(machine);
    }
}

std::string kindOf(unsigned char width, unsigned char order, std::uint16_t machine)
{
    return nameOf(machine) + (width == ELFCLASS64 ? ", 64 bits" : ", 32 bits") +
           (order == ELFDATA2LSB ? ", little-endian" : ", big-endian");
}

/// Both widths have type and machine at these places, written in the byte order of the file.
struct Identity {
    unsigned char ident[EI_NIDENT];
    unsigned char type[2];
    unsigned char machine[2];

    bool isElf() const { return std::memcmp(ident, ELFMAG, SELFMAG) == 0; }
    unsigned char width() const { return ident[EI_CLASS]; }
    unsigned char order() const { return ident[EI_DATA]; }

    std::uint16_t number(const unsigned char (&bytes)[2]) const
    {
        const bool big = order() == ELFDATA2MSB;
        return static_cast<std::uint16_t>(bytes[big ? 0 : 1] << 8 | bytes[big ? 1 : 0]);
    }
};

/// Why a file that begins so is no module, or nothing.
std::optional<std::string> faultOf(const Identity& file)
{
    if (!file.isElf()) {
        return "is no shared object; name the module's file with --module";
    }
    const auto machine = file.number(file.machine);
    if (file.width() != ELFCLASS64 || file.order() != ELFDATA2LSB || machine != kMachine) {
        return "is for another machine (" + kindOf(file.width(), file.order(), machine) +
               "); install the module for this one (" + kindOf(ELFCLASS64, ELFDATA2LSB, kMachine) +
               ")";
    }
    if (file.number(file.type) != ET_DYN) {
        return "is no shared object (ELF type " + std::to_string(file.number(file.type)) +
               "); name the module's file with --module";
    }
    return std::nullopt;
}

bool segmentsAreThere(Image& image, const Elf64_Ehdr& header)
{
    for (unsigned i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment;
        if (!image.read(header.e_phoff + std::uint64_t{i} * sizeof(segment), segment) ||
            !image.holds(segment.p_offset, segment.p_filesz)) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<std::string> faultOfModuleFile(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return (error ? error.message() : "is no file") + "; name the module's file with --module";
    }
    Image image(path);
    if (!image.isOpen()) {
        return std::string("cannot be read: ") + std::strerror(errno) +
               "; let the agent's user read it";
    }
    if (image.isEmpty()) {
        return "is empty; install the module again";
    }
    Identity identity{};  // stays no ELF file where the file is shorter
    image.read(0, identity);
    if (const auto fault = faultOf(identity)) {
        return fault;
    }
    Elf64_Ehdr header;
    if (!image.read(0, header) || header.e_phentsize != sizeof(Elf64_Phdr) ||
        !segmentsAreThere(image, header) ||
        !image.holds(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize)) {
        return "is damaged or cut short; install the module again";
    }
    return std::nullopt;
}

}  // namespace talvik
