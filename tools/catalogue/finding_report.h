#pragma once

#include "tools/catalogue/catalogue_check.h"
#include "tools/text_table.h"

#include <iosfwd>
#include <string>

namespace talvik::ctl {

/// What was checked, for the reports.
struct CheckedFiles {
    std::string definitions;
    std::string enumerations;  ///< empty when none was given
};

/// One finding a pair of lines, folded as `style` says, FILE:LINE:COLUMN first as compilers do, and
/// a summary.
void printFindings(std::ostream& out, const CheckedFiles& files, const CheckResult& result,
                   const TableStyle& style = {});

/// The same as one JSON object.
void printFindingsAsJson(std::ostream& out, const CheckedFiles& files, const CheckResult& result);

}  // namespace talvik::ctl
