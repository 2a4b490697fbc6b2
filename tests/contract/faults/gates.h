#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Stands between the module and each function that it takes from its host: this program exports
/// them all, counts each call and goes on to the reference host's own, unless a test lets it throw.
/// One test at a time, on one thread.
namespace talvik::gates {

/// What a call throws.
enum class Throws { KelException, BadAlloc, Int };

/// Reads "CKEL_Exception: thrown by the host", "bad_alloc" or "int".
const char* textOf(Throws kind);

/// All functions that have a gate, by the mangled name.
const std::vector<std::string>& all();

/// A readable name, without arguments: "CTLVRecordV3::append".
std::string readable(const std::string& symbol);

/// From here on calls are counted from 0.
void reset();

/// From here on calls are counted from 0, and the call number `call` of the function `gate`, from
/// 1, throws instead of being made.
void arm(std::size_t gate, std::size_t call, Throws kind);

/// Nothing is counted and nothing throws any more. True when the armed call came.
bool disarm();

/// While one lives, calls pass uncounted and nothing throws: around what a test does itself.
class Pause {
public:
    Pause();
    ~Pause();

    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

private:
    bool counting_;
};

/// How often each function was called since `reset` or `arm`, in the order of `all`.
const std::vector<std::size_t>& counts();

}  // namespace talvik::gates
