#!/bin/sh
# A folder below src/ includes only from itself and from folders above it in this list.
set -eu
cd "$(dirname "$0")/../src"
layers="platform numerics config input analysis depth render video report driver"
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
for header in unistd.h sys/stat.h spawn.h windows.h; do
    if grep -rln "#include <$header>" --include='*.cpp' --include='*.h' . | grep -v '^./platform/'; then
        echo "<$header> belongs to src/platform alone"
        status=1
    fi
done
exit $status
