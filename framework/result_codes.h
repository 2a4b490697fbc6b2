#pragma once

/// Results of handler operations; a callee's other non-zero code is passed up unchanged.
namespace talvik::result_code {

constexpr int kSuccess = 0;
constexpr int kFailed = -1;
constexpr int kTrapRequestRefused =
    0x3000003;  ///< a trap destination request that fails validation
constexpr int kNoParameterPosition =
    0x100400F;  ///< an alarm text with a placeholder that has no position

}  // namespace talvik::result_code
