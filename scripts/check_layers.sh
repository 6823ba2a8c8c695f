#!/bin/sh
# A folder below src/ includes only from itself and from folders above it in this list, and the headers of the
# system and of outside libraries only in their rooms.
set -eu
cd "$(dirname "$0")/../src"
layers="platform numerics codec config input analysis depth render video report driver"
above=""
status=0
for layer in $layers; do
    above="$above $layer"
    for included in $(grep -rhoE '^#include "[a-z_]+/' "$layer" 2>/dev/null | sed 's/#include "//; s,/,,' | sort -u); do
        case " $above " in
            *" $included "*) ;;
            *) echo "src/$layer includes from $included, which stands below it:"
               grep -rnE "^#include \"$included/" "$layer"
               status=1 ;;
        esac
    done
done

# A room: the headers, as a pattern, and the files that may include them, as another. A folder may have a header that
# is for itself alone.
room() {
    if grep -rnE "^#include [<\"]($1)" --include='*.cpp' --include='*.h' . | sed 's,^\./,,' | grep -vE "^($2)"; then
        echo "$1 is included out of its room, $2"
        status=1
    fi
}
room 'unistd\.h|sys/|spawn\.h|fcntl\.h|signal\.h|termios\.h|windows\.h' 'platform/'
room 'SDL' 'render/letter_mask\.cpp|platform/screen\.cpp'
room 'lcms2' 'render/cmyk\.cpp'
room 'libav|libsw' 'video/'
room 'FreeImage' 'codec/|numerics/bitmap\.cpp'
room 'codec/library\.h' 'codec/'
exit $status
