#pragma once

#include "host/snmp/net_snmp_persistence.h"

// After the above: net-snmp's headers leave names behind.
#include "host/snmp/net_snmp.h"

#include <string>
#include <utility>
#include <vector>

namespace talvik::test {

/// Words of the agent configuration that do nothing but note that they were taken; a line that ends
/// in "wrong" is an error. One instance at a time.
class FakeWords {
public:
    explicit FakeWords(std::vector<std::string> words) : words_(std::move(words))
    {
        current() = this;
        for (const auto& word : words_) {
            register_config_handler(kApplicationName, word.c_str(), &FakeWords::take,
                                    &FakeWords::drop, nullptr);
        }
    }

    ~FakeWords()
    {
        for (const auto& word : words_) {
            unregister_config_handler(kApplicationName, word.c_str());
        }
        current() = nullptr;
    }

    FakeWords(const FakeWords&) = delete;
    FakeWords& operator=(const FakeWords&) = delete;

    /// Those that hold: taken and not dropped since.
    const std::vector<std::string>& taken() const { return taken_; }

    int drops() const { return drops_; }

private:
    static FakeWords*& current()
    {
        static FakeWords* one = nullptr;
        return one;
    }

    static void take(const char* word, char* rest)
    {
        const std::string text = rest;
        if (text.size() >= 5 && text.compare(text.size() - 5, 5, "wrong") == 0) {
            config_perror("that is wrong");
            return;
        }
        current()->taken_.push_back(std::string(word) + " " + text);
    }

    static void drop()
    {
        ++current()->drops_;
        current()->taken_.clear();
    }

    const std::vector<std::string> words_;
    std::vector<std::string> taken_;
    int drops_ = 0;
};

}  // namespace talvik::test
