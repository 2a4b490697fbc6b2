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
constexpr auto kMachine = EM_AARCH64;
#elif defined(__x86_64__)
constexpr auto kMachine = EM_X86_64;
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
        return error ? error.message() : "is no file";
    }
    Image image(path);
    if (!image.isOpen()) {
        return std::string("cannot be read: ") + std::strerror(errno);
    }
    Elf64_Ehdr header;
    if (!image.read(0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_type != ET_DYN) {
        return "is no shared object";
    }
    if (header.e_machine != kMachine || header.e_ident[EI_DATA] != ELFDATA2LSB) {
        return "is for another machine";
    }
    if (header.e_phentsize != sizeof(Elf64_Phdr) || !segmentsAreThere(image, header) ||
        !image.holds(header.e_shoff, std::uint64_t{header.e_shnum} * header.e_shentsize)) {
        return "is damaged or cut short";
    }
    return std::nullopt;
}

}  // namespace talvik
