#!/bin/bash
# make.sh [TREE TARNTOOL OUT] - makes the package OUT of the product's files in the folder TREE, with wixl
# (packages wixl and msitools). Without arguments: lakeside.msi, of the kit's product and program.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
tree=$(realpath "${1:-$here/../product/tree}")
tarntool=$(realpath "${2:-$here/../../bin/tarntool.exe}")
out=$(realpath -m "${3:-$here/lakeside.msi}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# What lakeside.wxs names, beside it.
cp "$here/lakeside.wxs" "$work"
cp "$tarntool" "$work/tarntool.exe"
ln -s "$tree" "$work/tree"
: > "$work/chrc"
cd "$work"
# wixl reports some errors and goes on.
wixl -a x64 -o package.msi lakeside.wxs 2>&1 | tee wixl.log
[ ! -s wixl.log ]
mapfile -t queries < "$here/actions.sql"
msibuild package.msi -q "${queries[@]}"
mv package.msi "$out"
