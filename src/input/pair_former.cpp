#include "input/pair_former.h"

#include "platform/paths.h"

namespace zemora {

void PairFormer::add(std::string left, std::string right) {
    if (!adder_.check(left, right)) {
        return;
    }
    if (parameters.input_mode == setting::input_mode::alternating && is_every_second_) {
        names_.add_pair(right, left);  // NOLINT(readability-suspicious-call-argument): exchanged
    } else {
        names_.add_pair(left, right);
    }
    is_every_second_ = !is_every_second_;
    adder_.add(left, right, nullptr);
}

void PairFormer::tell_folder(const std::string& folder) {
    const bool is_new = folder != folder_;
    folder_ = folder;
    if (voice.verbose() > 0 && !has_told_root_) {
        voice.say<Msg::files_input_collecting_in_path>(printable(parameters.path_of_images));
    }
    if (voice.verbose() > 0 && is_new) {
        const std::string shown =
            folder == parameters.path_of_images ? "./" : relative_to(folder, parameters.path_of_images);
        voice.say<Msg::files_input_collecting_in_subfolder>(printable(shown));
    }
    has_told_root_ = true;
}

}  // namespace zemora
