#!/bin/bash
# pictures.sh - after ./dev test samples.Wizard: takes the pictures of README from those that the test has
# kept, without the desktop around the window and with no more colours than it takes.
set -eu
cd "$(dirname "$0")/.."
shots=build/release/screenshots
for picture in 1-welcome 3-email-refused:email 5-licence-missing:licence 6-licence-browse:browse 8-folder \
    9-wait 10-finish 11-uninstall; do
    name=${picture#*:}
    convert "$shots/wizard-${picture%:*}.png" -trim +repage +dither -colors 128 -strip \
        -define png:exclude-chunks=date,time -define png:compression-level=9 "PNG8:docs/images/wizard-${name#*-}.png"
done
ls -l docs/images
