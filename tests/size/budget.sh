#!/bin/bash
# budget.sh TARN_DLL - the library travels in every installer: it stays well below the 47,616 bytes of the
# three plug-ins that do the same jobs for NSIS (64-bit Banner, nsDialogs and System).
budget=40000
bytes=$(stat -c %s "$1") || exit
echo "$bytes bytes of $budget"
[ "$bytes" -gt 20000 ] && [ "$bytes" -le "$budget" ]
