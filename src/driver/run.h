#pragma once
/// One run of the program, from its arguments to its exit code.

#include <string>
#include <vector>

namespace zemora {

/// `arguments` are those behind the program's name, which is `program`.
[[nodiscard]] int run_zemora(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace zemora
