#pragma once
/// What all HTML pages have in common.

#include <string>
#include <string_view>

#include "config/messages.h"

namespace zemora {

/// The page up to the open block that holds its contents: author, encoding, description, title and style.
/// `script` is the body of a script element of the head, or empty. The page is written in Latin-1.
[[nodiscard]] std::string page_head(std::string_view description, Language language,
                                    std::string_view script = {});

/// Closes what `page_head` opened.
inline constexpr std::string_view kPageEnd = "</div></body></html>\n";

/// The script function that opens the comfort calculator in a window of its own.
[[nodiscard]] std::string_view open_calculator_script();

/// HTML in UTF-8 to Latin-1; what Latin-1 does not have becomes a numeric reference. Invalid UTF-8 is taken
/// as Windows-1252, control characters are shown as "?".
[[nodiscard]] std::string latin1_html(std::string_view html);

}  // namespace zemora
