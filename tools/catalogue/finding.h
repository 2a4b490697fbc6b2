#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// What `talvikctl catalogue check` tells an author. docs/alarm-catalogue.md explains every code.
namespace talvik::ctl {

enum class Severity {
    Note,     ///< worth knowing; the alarm works as written
    Warning,  ///< the alarm is shown, but not as its author will expect
    Error,    ///< the module drops something, or cannot show the alarm
};

const char* nameOf(Severity severity);

/// One kind of finding. The code is for scripts and never changes its meaning.
struct FindingKind {
    const char* code;
    Severity severity;
};

/// A character of a file. Lines and columns count from 1, columns in characters (code points).
struct Place {
    std::string file;
    std::size_t line;
    std::size_t column;
};

struct Finding {
    FindingKind kind;
    Place place;
    std::string message;  ///< what is wrong and what the module makes of it
    std::string advice;   ///< what to do
};

/// The findings of one check.
class Findings {
public:
    void add(const FindingKind& kind, Place place, std::string message, std::string advice)
    {
        list_.push_back({kind, std::move(place), std::move(message), std::move(advice)});
    }

    std::size_t count(Severity severity) const;

    const std::vector<Finding>& list() const { return list_; }

    /// Puts them in the order of each file, those of `firstFile` first.
    void sort(const std::string& firstFile);

private:
    std::vector<Finding> list_;
};

}  // namespace talvik::ctl
