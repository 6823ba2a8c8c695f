#pragma once
/// The language of the user.

namespace zemora {

/// True when the first set of LC_ALL, LC_MESSAGES and LANG begins with "de".
[[nodiscard]] bool user_speaks_german();

}  // namespace zemora
