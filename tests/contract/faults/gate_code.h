#pragma once

#include <cstddef>

namespace talvik::gates {

/// The mangled names of the functions that have a gate: a file that is made with the module.
extern const char* const kSymbols[];
extern const std::size_t kSymbolCount;

}  // namespace talvik::gates

/// The gate of one function, by its number in the list. It keeps the arguments, whatever they are,
/// asks `talvik_pass_gate` and goes on as if it had not been there. The frame is described, so that
/// what is thrown gets through.
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
