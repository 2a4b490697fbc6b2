#include "tests/contract/faults/gates.h"

#include "framework/kel_exception.h"
#include "tests/contract/faults/gate_code.h"

#include <cxxabi.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace talvik::gates {

namespace {

struct State {
    bool counting = false;
    bool armed = false;
    bool came = false;
    std::size_t gate = 0;
    std::size_t call = 0;
    Throws kind = Throws::Int;
    std::vector<std::size_t> counts = std::vector<std::size_t>(kSymbolCount);
};

State& state()
{
    static State it;
    return it;
}

/// The reference host's own, in its library behind this program.
void* realOne(std::size_t gate)
{
    static std::vector<void*> found(kSymbolCount);
    if (found[gate] == nullptr) {
        found[gate] = dlsym(RTLD_NEXT, kSymbols[gate]);
        if (found[gate] == nullptr) {
            throw std::logic_error(std::string("the reference host has no ") + kSymbols[gate]);
        }
    }
    return found[gate];
}

[[noreturn]] void fail(Throws kind)
{
    switch (kind) {
    case Throws::KelException:
        throw CKEL_Exception("thrown by the host");
    case Throws::BadAlloc:
        throw std::bad_alloc();
    case Throws::Int:
        break;
    }
    throw 42;
}

void start()
{
    state().counting = true;
    state().came = false;
    state().counts.assign(kSymbolCount, 0);
}

}  // namespace

const char* textOf(Throws kind)
{
    switch (kind) {
    case Throws::KelException:
        return "CKEL_Exception: thrown by the host";
    case Throws::BadAlloc:
        return "bad_alloc";
    case Throws::Int:
        break;
    }
    return "int";
}

const std::vector<std::string>& all()
{
    static const std::vector<std::string> symbols(kSymbols, kSymbols + kSymbolCount);
    return symbols;
}

std::string readable(const std::string& symbol)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), &std::free);
    const std::string name = text ? text.get() : symbol;
    return name.substr(0, std::min(name.find('('), name.find("[abi:")));
}

void reset()
{
    start();
    state().armed = false;
}

void arm(std::size_t gate, std::size_t call, Throws kind)
{
    start();
    state().armed = true;
    state().gate = gate;
    state().call = call;
    state().kind = kind;
}

bool disarm()
{
    state().counting = false;
    state().armed = false;
    return state().came;
}

Pause::Pause() : counting_(std::exchange(state().counting, false)) {}

Pause::~Pause()
{
    state().counting = counting_;
}

const std::vector<std::size_t>& counts()
{
    return state().counts;
}

}  // namespace talvik::gates

/// Called by every gate: where the call goes on.
extern "C" void* talvik_pass_gate(std::uint64_t gate)
{
    using namespace talvik::gates;
    auto& now = state();
    if (now.counting) {
        const auto call = ++now.counts[gate];
        if (now.armed && gate == now.gate && call == now.call) {
            now.came = true;
            fail(now.kind);
        }
    }
    return realOne(gate);
}
