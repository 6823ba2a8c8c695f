#pragma once
/// Text files that a run leaves.

#include <string>
#include <string_view>

#include "config/messages.h"
#include "numerics/result.h"

namespace zemora {

/// Writes a text so that nothing half-written ever stands under its name. Fails for the run, with the name
/// and the reason; an older file of that name then stays.
[[nodiscard]] Result<void> write_text_file(const std::string& path, std::string_view text,
                                           const MessageCatalogue& messages);

}  // namespace zemora
