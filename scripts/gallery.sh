#!/bin/sh
# Makes doc/gallery/ anew: one sheet with every anaglyph type and one with every other product of the
# generated example pair. Needs ImageMagick's montage.
set -eu
top=$(cd "$(dirname "$0")/.." && pwd)
command -v montage >/dev/null || { echo "Please install imagemagick: the sheets are put together by montage."; exit 1; }
"$top/scripts/setup.sh"

work=$top/build/gallery
rm -rf "$work"
mkdir -p "$work" "$top/doc/gallery"
(cd "$top" && { [ -f build/release/build.ninja ] || cmake --preset release; } &&
    cmake --build --preset release --target zemora zemora_scene) >"$work/build.log" 2>&1 || { tail -n 30 "$work/build.log"; exit 1; }

"$top/build/release/tools/zemora_scene" "$work/garden_l.jpg" "$work/garden_r.jpg" 960 640 \
    height=7 size=0.8 rotation=0.9 vergence_v=0.4 vergence_h=0.3 brightness=0.92 noise=1
cp "$top/resource/zemora_colors.txt" "$work/"

# The pair is measured once; all pictures take its corrections from the list.
mount() {
    "$top/build/release/zemora" "--PathofImages=$work" --StopAtError=0 --ReportMode=0 --StampFiles=0 --OutputFormat=4 \
        --LeftRightOutput=0 --StereoOutput=0 --AnaglyphOutput=0 --ExtraOutput=0 --ExifCopyright= "$@" \
        </dev/null >>"$work/mount.log" 2>&1
}
mount --InputMode=1 --StereoOutput=2
again() {
    mount --InputMode=10 --EstimateGeometry=2 "$@"
}

kinds="0:greys 1:mixed 2:full 3:half 4:optimised 5:linear-light 6:monitor 7:print 8:matrices 9:matrices"
set --
for kind in $kinds; do
    type=${kind%%:*}
    again --AnaglyphOutput=2 "--AnaglyphType=$type" "--IdentOutputDir=-$type"
    set -- "$@" -label "AnaglyphType $type (${kind##*:})" "$work/ca-$type/garden_ca.png"
done
montage "$@" -resize 400x -quality 78 -tile 3x -geometry +6+6 -pointsize 16 "$top/doc/gallery/anaglyphs.jpg"

set --
again --StereoOutput=2 --IdentOutputDir=-plain
set -- "$@" -label "StereoOutput" "$work/cs-plain/garden_cs.png"
for kind in 1:lrq 2:ab 3:abq 4:oe 6:lrl 7:lrrl; do
    format=${kind%%:*}
    ending=${kind##*:}
    again "--ExtraOutput=$format" --IdentOutputDir=-x
    set -- "$@" -label "ExtraOutput $format ($ending)" "$work/ce_$ending-x/garden_ce-$ending.png"
done
again --StereoOutput=2 --IdentOutputDir=-framed --FrameTop=60 --FrameBottom=70 --FrameLeftRight=40 --FrameCentral=10 \
    --ThinBlackLine=2 --FrameColorRed=60 --FrameColorGreen=70 --FrameColorBlue=60 "--CaptionText=A generated garden" \
    "--ImageText=mounted" "--ExifCopyright=(c) Zemora"
set -- "$@" -label "frame, line, caption, copyright, image text" "$work/cs-framed/garden_cs.png"
again --StereoOutput=2 --IdentOutputDir=-curtains --AutoFrameFloating=5 --EstimateWindow=4 --FloatingTarget=20 --WinOffReference=1
set -- "$@" -label "floating window" "$work/cs-curtains/garden_cs.png"
montage "$@" -resize 520x360 -quality 78 -tile 3x -geometry +6+6 -pointsize 16 "$top/doc/gallery/products.jpg"
ls -l "$top/doc/gallery"
