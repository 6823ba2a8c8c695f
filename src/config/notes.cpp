#include "config/notes.h"

namespace zemora {

void KeptNotes::tell(Notes& listener) {
    for (Note& note : std::exchange(notes_, {})) {
        listener.add(std::move(note));
    }
}

}  // namespace zemora
