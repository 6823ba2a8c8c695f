#pragma once
/// Names for the values of settings that stand for choices: `setting::cropp_output::common_area` is 2. They
/// are part of the rows of the parameter table.

namespace zemora::setting {

#define ROW(type, field, key, low, high, standard, missing, option, english, german, ...) \
    __VA_OPT__(namespace field { enum : int { __VA_ARGS__ }; })
#include "config/parameter_table.inc"
#undef ROW

}  // namespace zemora::setting
