#pragma once

#include <cstring>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

namespace talvik {

/// A text that may have passphrases. Its octets are nowhere but in one block of memory, which is
/// wiped before it is given back; so it never grows, and a move takes the block along.
class SecretText {
public:
    SecretText() = default;

    /// `parts` one behind the other.
    explicit SecretText(std::initializer_list<std::string_view> parts)
    {
        std::size_t size = 1;
        for (const auto part : parts) {
            size += part.size();
        }
        octets_.reserve(size);
        for (const auto part : parts) {
            octets_.insert(octets_.end(), part.begin(), part.end());
        }
        octets_.push_back('\0');
    }

    ~SecretText()
    {
        if (!octets_.empty()) {
            explicit_bzero(octets_.data(), octets_.size());
        }
    }

    SecretText(SecretText&& other) noexcept : octets_(std::move(other.octets_)) {}

    SecretText& operator=(SecretText&& other) noexcept
    {
        SecretText former(std::move(*this));
        octets_.swap(other.octets_);
        return *this;
    }

    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;

    std::string_view view() const
    {
        return octets_.empty() ? std::string_view()
                               : std::string_view(octets_.data(), octets_.size() - 1);
    }

    /// Ends in a NUL. For C functions that cut up what they are given; never null after the
    /// constructor that takes parts.
    char* data() { return octets_.data(); }
    const char* data() const { return octets_.data(); }

    friend bool operator==(const SecretText& text, std::string_view other)
    {
        return text.view() == other;
    }

    friend bool operator==(const SecretText& one, const SecretText& other)
    {
        return one.view() == other.view();
    }

private:
    std::vector<char> octets_;
};

}  // namespace talvik
