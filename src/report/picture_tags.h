#pragma once
/// Pictures in the HTML report.

#include <string>

namespace zemora {

/// The address of a file in a page that lies in `page_folder`: relative where the file lies below it,
/// percent-encoded by component.
[[nodiscard]] std::string page_address(const std::string& path, const std::string& page_folder);

/// Both views beside each other. `page_folder` is the folder of the report.
[[nodiscard]] std::string pair_tag(const std::string& left, const std::string& right,
                                   const std::string& page_folder);
/// Thumbnails of both views beside each other.
[[nodiscard]] std::string thumb_tag(const std::string& left, const std::string& right,
                                    const std::string& page_folder);
/// One picture of the pair.
[[nodiscard]] std::string preview_tag(const std::string& path, const std::string& page_folder);

}  // namespace zemora
