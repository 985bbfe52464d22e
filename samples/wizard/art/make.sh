#!/bin/bash
# make.sh [FOLDER] - draws the wizard's pictures, a lake in the evening, with ImageMagick. They are kept
# beside this file, so that the wizard can be made without it.
#
#   side.bmp     164 x 314   the first and the last page
#   header.bmp   150 x 57    the right end of the header of all others
#   small.bmp     55 x 58    the same for Inno Setup, which has a square there
#   setup.ico                16, 32 and 48 pixels
#   remove.ico               the same for the uninstaller, when the sun has set
set -eu
out=${1:-$(dirname "$0")}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

evening() {
    high='#22355c' between='#a0788c' low='#f2c58a' sun='#fff4d6' shine='#f6d9a6'
    far='#8a86a0' middle='#57678a' near='#2c4668' water='#3c6f94' deep='#274d70'
}
night() {
    high='#3d4757' between='#77818d' low='#b9bfc5' sun=none shine=none
    far='#9aa2ab' middle='#747f8b' near='#525e6b' water='#6b7c8a' deep='#4d5c69'
}

# scene WIDTH HEIGHT SHORE HILLS SUN_X SUN_Y SUN_RADIUS - the picture, four times as large as needed, which
# smooths its edges. SHORE is where the water begins, HILLS the height of the highest.
scene() {
    local w=$(($1 * 4)) h=$(($2 * 4)) shore=$(($3 * 4)) x=$(($5 * 4)) y=$(($6 * 4)) r=$(($7 * 4))
    local at i light=()
    # The hills' own coordinates: 100 wide, 100 high, upwards from the shore.
    at="translate 0,$shore scale $(awk "BEGIN { print $w / 100, -4 * $4 / 100 }" | tr ' ' ,)"
    for i in 1 2 3 4 5; do # the sun on the water
        light+=(-draw "roundrectangle $((x - r + i * r / 7)),$((shore + i * r * 2 / 5)) \
            $((x + r - i * r / 7)),$((shore + i * r * 2 / 5 + r / 8)) 5,5")
    done
    convert \( -size "${w}x$((shore / 2))" "gradient:$high-$between" \) \
        \( -size "${w}x$((shore - shore / 2))" "gradient:$between-$low" \) \
        \( -size "${w}x$((h - shore))" "gradient:$water-$deep" \) -append \
        -fill "$sun" -draw "circle $x,$y $((x + r)),$y" \
        -fill "$far" -draw "push graphic-context $at \
            path 'M 0,55 C 15,105 28,112 42,60 S 70,70 100,38 L 100,0 L 0,0 Z' pop graphic-context" \
        -fill "$middle" -draw "push graphic-context $at \
            path 'M 24,0 C 42,44 58,72 76,58 S 92,50 100,64 L 100,0 Z' pop graphic-context" \
        -fill "$near" -draw "push graphic-context $at \
            path 'M 0,50 C 14,56 30,30 56,0 L 0,0 Z' pop graphic-context" \
        -fill "$shine" "${light[@]}" "$work/scene.png"
}

# bitmap FILE WIDTH HEIGHT - with a palette, and not packed: every system's wizard reads that.
bitmap() {
    convert "$work/scene.png" -filter Box -resize "$2x$3!" +dither -colors 256 -type Palette \
        -compress None "BMP3:$out/$1"
}

# icon FILE - the square scene, with rounded corners.
icon() {
    local size sizes=()
    convert -size 192x192 xc:black -fill white -draw 'roundrectangle 0,0 191,191 40,40' "$work/mask.png"
    convert "$work/scene.png" "$work/mask.png" -alpha off -compose CopyOpacity -composite \
        "$work/rounded.png"
    for size in 16 32 48; do
        convert "$work/rounded.png" -filter Box -resize ${size}x$size "$work/$size.png"
        sizes+=("$work/$size.png")
    done
    convert "${sizes[@]}" "$out/$1"
}

evening
scene 164 314 212 46 112 140 22
bitmap side.bmp 164 314
scene 150 57 41 22 108 17 9
bitmap header.bmp 150 57
scene 55 58 40 17 36 18 9
bitmap small.bmp 55 58
scene 48 48 33 14 30 16 8
icon setup.ico
night
scene 48 48 33 14 30 16 8
icon remove.ico
