#pragma once
/// The words of the pages and what several pages share.

#include <string>
#include <string_view>

#include "config/messages.h"

namespace zemora {

/// A body of a page, UTF-8, with its marks in double braces replaced: by words of the language, or by a piece
/// that pages share; marks in these are replaced too.
[[nodiscard]] std::string filled_page(std::string_view body, Language language);

}  // namespace zemora
