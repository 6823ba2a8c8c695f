#include "input/pair_former.h"

#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

void PairFormer::add(std::string left, std::string right) {
    if (!adder_.check(left, right)) {
        return;
    }
    if (options.input_mode == setting::input_mode::alternating && is_every_second_) {
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
    if (notes.verbose() > 0 && !has_told_root_) {
        notes.say<Msg::files_input_collecting_in_path>(printable(options.path_of_images));
    }
    if (notes.verbose() > 0 && is_new) {
        const std::string shown =
            folder == options.path_of_images ? "./" : relative_to(folder, options.path_of_images);
        notes.say<Msg::files_input_collecting_in_subfolder>(printable(shown));
    }
    has_told_root_ = true;
}

}  // namespace zemora
