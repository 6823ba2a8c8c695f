#pragma once
/// The names of the products of a pair: stamped, and combined where the pair has no common base.

#include <optional>
#include <string>
#include <vector>

#include "config/notes.h"
#include "config/parameter_set.h"
#include "driver/output_names.h"
#include "input/image_list.h"

namespace zemora {

/// What the names of a pair are made from.
struct NamedPair {
    std::string left_relative;  ///< Relative to the image folder, or absolute.
    std::string right_relative;
    std::string left_suffix;  ///< Of the stored pictures.
    std::string right_suffix;
    bool two_files = true;
    int index = 0;
    StampValues stamps;
    std::optional<int> frame = {};  ///< Of a film: its number stands in the name.
};

/// Both views' names of one product.
struct ProductNames {
    OutputName left;
    OutputName right;
};

[[nodiscard]] ProductNames view_names(const ParameterSet& parameters, const NamedPair& pair,
                                      ProductKind left_kind, ProductKind right_kind);

/// The name of a product in one file. `inverse_output` exchanges the views of an extra product.
[[nodiscard]] OutputName single_name(const ParameterSet& parameters, const NamedPair& pair, ProductKind kind,
                                     bool inverse_output);

/// The deviation against the width of the projection, of a picture with that ratio of its sides.
[[nodiscard]] double projected_deviation(const ParameterSet& parameters, double image_ratio,
                                         double deviation);

/// The names of the pairs that an earlier run has mounted and this one passes over are given away before the
/// first pair of this run is stored.
void give_away_mounted_names(const ParameterSet& parameters, const Notes& notes, const ImageList& list,
                             GivenNames& given);

}  // namespace zemora
