#pragma once
/// The colour profile of multi-picture files.

#include <string>

namespace zemora {

/// Gives the second picture of a file of ours the colour profile of the first, where it has none: editors put
/// one into the first picture only. Empty, or the reason of a failure; a file without an index that leads to
/// its second picture stays as it is.
[[nodiscard]] std::string share_profile(const std::string& path);

}  // namespace zemora
