#pragma once
/// Which vector instructions this processor has, and which of them may be used.

namespace zemora {

/// Instruction sets that the hot loops are written for, each including those before it.
enum class InstructionSet { portable, avx2, avx512 };

/// The best set of this processor, lowered by the environment variable ZEMORA_ISA ("portable",
/// "avx2", "avx512") or by `limit_instruction_set`. avx512 means the F, BW, VL, DQ and VNNI parts.
[[nodiscard]] InstructionSet usable_instruction_set();

/// Lowers the answer of `usable_instruction_set`; for tests and benchmarks.
void limit_instruction_set(InstructionSet limit);

}  // namespace zemora
