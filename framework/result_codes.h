#pragma once

/// Results of handler operations; a callee's other non-zero code is passed up unchanged.
namespace talvik::result_code {

constexpr int kSuccess = 0;
constexpr int kFailed = -1;
constexpr int kTrapRequestRefused =
    0x3000003;  ///< a trap destination request that fails validation

}  // namespace talvik::result_code
