#!/usr/bin/env bash
# The direction of includes: each room of the engine includes the rooms that it stands on, the engine nothing of the
# kit, the kit and the program nothing of the engine but its door. Prints the map as the includes draw it.
# usage: layers.sh SOURCE_DIR
set -euo pipefail
shopt -s globstar nullglob
cd "$1"

# What a room may include beside itself. The records of support that a model holds belong to the mesh as well.
declare -A below=(
    [foundation]=""
    [trees]="foundation"
    [mesh]="foundation trees support/FeatureSurface.h support/FeatureEdge.h"
    [modelfiles]="foundation trees mesh"
    [support]="foundation trees mesh"
    [contours]="foundation"
    [cli]="foundation contours"
)
rooms="foundation trees mesh modelfiles support contours cli"

declare -A uses
bad=0
report() {
    echo "$1 includes $2: $3"
    bad=1
}
includes_of() { sed -nE 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]([^">]+)[">].*/\1/p' "$1"; }

for room in $rooms; do
    for file in src/$room/**/*.{h,cpp} include/varnet64/$room/**/*.h; do
        while read -r header; do
            if [[ $header == varnet/* || ( -f kit/$header && ! -f src/$header && ! -f include/varnet64/$header ) ]]; then
                report "$file" "$header" "the engine knows nothing of the kit"
            elif [[ $file == include/* && -f src/$header ]]; then
                report "$file" "$header" "the door shows nothing of what is behind it"
            elif [[ -f src/$header || -f include/varnet64/$header ]]; then
                other=${header%%/*}
                [[ $other == "$room" || $header != */* ]] && continue
                [[ " ${below[$room]} " == *" $other "* || " ${below[$room]} " == *" $header "* ]] ||
                    report "$file" "$header" "$room does not stand on $other"
                uses[$room]="${uses[$room]:-}$other"$'\n'
            fi
        done < <(includes_of "$file")
    done
done

for file in kit/**/*.{h,cpp} include/varnet/**/*.h; do
    while read -r header; do
        [[ $header == Varnet64.h || -f include/$header ]] && continue
        [[ $file == kit/* && ( -f kit/$header || -f ${file%/*}/$header ) ]] && continue
        [[ -f src/$header || -f include/varnet64/$header || $header == varnet64/* || -f kit/$header || -f program/$header ]] ||
            continue
        report "$file" "$header" "the kit sees the door, which is Varnet64.h, and itself; its face is closed"
    done < <(includes_of "$file")
done

for file in program/**/*.{h,cpp}; do
    while read -r header; do
        [[ $header == Varnet64.h || -f program/$header || -f shapes/$header ]] && continue
        [[ $header == varnet/* && -f include/$header ]] && continue
        [[ -f src/$header || -f include/varnet64/$header || -f kit/$header || $header == varnet64/* ]] || continue
        report "$file" "$header" "the program sees the face of the kit and the door"
    done < <(includes_of "$file")
done

# Where the door and the pages say that something stands: a list of files in one folder, the first with the path.
missing=$(cat include/varnet64/**/*.h docs/architecture.md |
    grep -oE '\bsrc/[A-Za-z/]+\.(cpp|h)((,| and)( //)? [A-Za-z]+\.(cpp|h))*' |
    while read -r first others; do
        first=${first%,}
        for file in "$first" $(tr -d , <<<"$others" | sed "s# *and # #g; s#//##g"); do
            [[ $file == */* ]] || file=${first%/*}/$file
            [ -f "$file" ] || echo "$file"
        done
    done)
if [ -n "$missing" ]; then
    echo "named as where bodies are, but not there: $missing"
    bad=1
fi

for room in $rooms; do
    printf '%-11s' "$room"
    for other in $rooms; do
        count=$(grep -cx "$other" <<<"${uses[$room]:-}" || true)
        [ "$count" -gt 0 ] && printf ' <- %s (%d)' "$other" "$count"
    done
    echo
done
echo "kit         <- door"
echo "program     <- kit, door"
exit $bad
