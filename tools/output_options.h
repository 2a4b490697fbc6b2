#pragma once

#include "tools/text_table.h"

#include <optional>
#include <string>

namespace talvik::ctl {

/// How a command prints what it has to say.
struct OutputOptions {
    bool json = false;
    bool wide = false;   ///< tables are not cut
    bool quiet = false;  ///< no progress
    std::string color = "auto";
};

/// What standard output is and what the environment says about it.
struct Surroundings {
    bool terminal = false;
    std::size_t columns = 0;  ///< as the terminal says; 0 when it does not
    std::size_t rows = 0;     ///< the same
    std::optional<std::string> columnsVariable = std::nullopt;  ///< COLUMNS
    std::optional<std::string> noColor = std::nullopt;          ///< NO_COLOR
    std::optional<std::string> term = std::nullopt;             ///< TERM
};

/// Those of this program.
Surroundings surroundingsOfOutput();

/// The looks of tables on standard output.
TableStyle tableStyle(const OutputOptions& options, const Surroundings& surroundings);
TableStyle tableStyle(const OutputOptions& options);

/// Whether a picture can be drawn over the one before it.
bool canRedraw(const Surroundings& surroundings);

/// Whether progress may be shown: on standard error, if it is a terminal that can redraw a line.
bool wantsProgress(const OutputOptions& options);

}  // namespace talvik::ctl
