#include "tools/catalogue/finding.h"

#include <algorithm>
#include <tuple>

namespace talvik::ctl {

const char* nameOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return "note";
    case Severity::Warning:
        return "warning";
    case Severity::Error:
        break;
    }
    return "error";
}

std::size_t Findings::count(Severity severity) const
{
    return static_cast<std::size_t>(
        std::count_if(list_.begin(), list_.end(), [severity](const Finding& finding) {
            return finding.kind.severity == severity;
        }));
}

void Findings::sort(const std::string& firstFile)
{
    const auto key = [&firstFile](const Finding& finding) {
        const auto& place = finding.place;
        return std::make_tuple(place.file != firstFile, place.line, place.column);
    };
    std::stable_sort(list_.begin(), list_.end(),
                     [&key](const Finding& a, const Finding& b) { return key(a) < key(b); });
}

}  // namespace talvik::ctl
