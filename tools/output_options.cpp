#include "tools/output_options.h"

#include "tools/alarm_input.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>

namespace talvik::ctl {

namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kUsualRows = 24;
constexpr std::uint64_t kMostColumns = 100000;

std::optional<std::string> variable(const char* name)
{
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): nobody sets one
    return value == nullptr ? std::nullopt : std::make_optional<std::string>(value);
}

bool isDumb(const std::optional<std::string>& term)
{
    return !term || term->empty() || *term == "dumb";
}

std::size_t columnsOf(const Surroundings& surroundings)
{
    if (surroundings.columnsVariable) {
        if (const auto columns = wholeNumber(*surroundings.columnsVariable, 1, kMostColumns)) {
            return static_cast<std::size_t>(*columns);
        }
    }
    return surroundings.columns == 0 ? kUsualColumns : surroundings.columns;
}

}  // namespace

Surroundings surroundingsOfOutput()
{
    Surroundings found;
    found.terminal = ::isatty(STDOUT_FILENO) == 1;
    winsize size{};
    if (found.terminal && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        found.columns = size.ws_col;
        found.rows = size.ws_row;
    }
    found.rows = found.rows == 0 ? kUsualRows : found.rows;
    found.columnsVariable = variable("COLUMNS");
    found.noColor = variable("NO_COLOR");
    found.term = variable("TERM");
    return found;
}

TableStyle tableStyle(const OutputOptions& options, const Surroundings& surroundings)
{
    TableStyle style;
    style.columns = surroundings.terminal && !options.wide ? columnsOf(surroundings) : 0;
    const bool unwanted = surroundings.noColor && !surroundings.noColor->empty();
    style.colors = options.color == "always" || (options.color == "auto" && surroundings.terminal &&
                                                 !isDumb(surroundings.term) && !unwanted);
    return style;
}

TableStyle tableStyle(const OutputOptions& options)
{
    return tableStyle(options, surroundingsOfOutput());
}

bool canRedraw(const Surroundings& surroundings)
{
    return surroundings.terminal && !isDumb(surroundings.term);
}

bool wantsProgress(const OutputOptions& options)
{
    return !options.json && !options.quiet && ::isatty(STDERR_FILENO) == 1 &&
           !isDumb(variable("TERM"));
}

}  // namespace talvik::ctl
