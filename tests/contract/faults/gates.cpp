#include "tests/contract/faults/gates.h"

#include "framework/kel_exception.h"

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

#define TALVIK_GATE(number, symbol) symbol,
const char* const kSymbols[] = {
#include "gates.inc"
};
#undef TALVIK_GATE

constexpr std::size_t kCount = sizeof kSymbols / sizeof kSymbols[0];

struct State {
    bool counting = false;
    bool armed = false;
    bool came = false;
    std::size_t gate = 0;
    std::size_t call = 0;
    Throws kind = Throws::Int;
    std::vector<std::size_t> counts = std::vector<std::size_t>(kCount);
};

State& state()
{
    static State it;
    return it;
}

/// The reference host's own, in its library behind this program.
void* realOne(std::size_t gate)
{
    static void* found[kCount];
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
    state().counts.assign(kCount, 0);
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
    static const std::vector<std::string> symbols(kSymbols, kSymbols + kCount);
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

// A gate keeps the arguments, whatever they are, asks talvik_pass_gate and goes on as if it had not
// been there. The frame is described, so that what is thrown gets through.
#if defined(__x86_64__)
#define TALVIK_GATE(number, symbol)                                                                \
    asm(".text\n.globl " symbol "\n.type " symbol ",@function\n" symbol ":\n"                      \
        ".cfi_startproc\n"                                                                         \
        "endbr64\n"                                                                                \
        "subq $184, %rsp\n"                                                                        \
        ".cfi_adjust_cfa_offset 184\n"                                                             \
        "movq %rdi, 0(%rsp)\nmovq %rsi, 8(%rsp)\nmovq %rdx, 16(%rsp)\nmovq %rcx, 24(%rsp)\n"       \
        "movq %r8, 32(%rsp)\nmovq %r9, 40(%rsp)\nmovq %rax, 48(%rsp)\n"                            \
        "movups %xmm0, 56(%rsp)\nmovups %xmm1, 72(%rsp)\nmovups %xmm2, 88(%rsp)\n"                 \
        "movups %xmm3, 104(%rsp)\nmovups %xmm4, 120(%rsp)\nmovups %xmm5, 136(%rsp)\n"              \
        "movups %xmm6, 152(%rsp)\nmovups %xmm7, 168(%rsp)\n"                                       \
        "movl $" #number ", %edi\n"                                                                \
        "call talvik_pass_gate@PLT\n"                                                              \
        "movq %rax, %r11\n"                                                                        \
        "movq 0(%rsp), %rdi\nmovq 8(%rsp), %rsi\nmovq 16(%rsp), %rdx\nmovq 24(%rsp), %rcx\n"       \
        "movq 32(%rsp), %r8\nmovq 40(%rsp), %r9\nmovq 48(%rsp), %rax\n"                            \
        "movups 56(%rsp), %xmm0\nmovups 72(%rsp), %xmm1\nmovups 88(%rsp), %xmm2\n"                 \
        "movups 104(%rsp), %xmm3\nmovups 120(%rsp), %xmm4\nmovups 136(%rsp), %xmm5\n"              \
        "movups 152(%rsp), %xmm6\nmovups 168(%rsp), %xmm7\n"                                       \
        "addq $184, %rsp\n"                                                                        \
        ".cfi_adjust_cfa_offset -184\n"                                                            \
        "jmp *%r11\n"                                                                              \
        ".cfi_endproc\n.size " symbol ", .-" symbol "\n");
#elif defined(__aarch64__)
#define TALVIK_GATE(number, symbol)                                                                \
    asm(".text\n.globl " symbol "\n.type " symbol ",%function\n" symbol ":\n"                      \
        ".cfi_startproc\n"                                                                         \
        "stp x29, x30, [sp, #-224]!\n"                                                             \
        ".cfi_adjust_cfa_offset 224\n.cfi_rel_offset x29, 0\n.cfi_rel_offset x30, 8\n"             \
        "stp x0, x1, [sp, #16]\nstp x2, x3, [sp, #32]\nstp x4, x5, [sp, #48]\n"                    \
        "stp x6, x7, [sp, #64]\nstr x8, [sp, #80]\n"                                               \
        "stp q0, q1, [sp, #96]\nstp q2, q3, [sp, #128]\nstp q4, q5, [sp, #160]\n"                  \
        "stp q6, q7, [sp, #192]\n"                                                                 \
        "mov x0, #" #number "\n"                                                                   \
        "bl talvik_pass_gate\n"                                                                    \
        "mov x16, x0\n"                                                                            \
        "ldp x0, x1, [sp, #16]\nldp x2, x3, [sp, #32]\nldp x4, x5, [sp, #48]\n"                    \
        "ldp x6, x7, [sp, #64]\nldr x8, [sp, #80]\n"                                               \
        "ldp q0, q1, [sp, #96]\nldp q2, q3, [sp, #128]\nldp q4, q5, [sp, #160]\n"                  \
        "ldp q6, q7, [sp, #192]\n"                                                                 \
        "ldp x29, x30, [sp], #224\n"                                                               \
        ".cfi_adjust_cfa_offset -224\n.cfi_restore x29\n.cfi_restore x30\n"                        \
        "br x16\n"                                                                                 \
        ".cfi_endproc\n.size " symbol ", .-" symbol "\n");
#else
#error "say here how a gate keeps the arguments"
#endif

#include "gates.inc"
