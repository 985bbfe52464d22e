#!/bin/bash
# Signing, with a certificate that is thrown away at the end.
# shellcheck source=tests/package/lib.sh
. "$(dirname "$0")/lib.sh"
need_tools cmake openssl osslsigncode unzip x86_64-w64-mingw32-gcc
unset TARN_SIGN_PFX TARN_SIGN_CERT TARN_SIGN_KEY TARN_SIGN_PASSWORD_FILE TARN_SIGN_TIMESTAMP_URL
unpack_kit

openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -days 2 \
    -subj '/CN=Tarn test' -addext extendedKeyUsage=codeSigning 2> /dev/null
echo 'a password' > password
openssl pkcs12 -export -inkey key.pem -in cert.pem -out both.pfx -passout file:password

install() { env "${@:2}" cmake --install "$build" --prefix "$scratch/$1"; }
verify() {
    osslsigncode verify -CAfile cert.pem -in "$1/bin/tarn.dll" &&
        osslsigncode verify -CAfile cert.pem -in "$1/bin/tarntool.exe"
}

check 'without a certificate nothing is signed' install unsigned
check 'which is noticed' refuses verify unsigned
check 'the kit is signed with two files' \
    install pem "TARN_SIGN_CERT=$scratch/cert.pem" "TARN_SIGN_KEY=$scratch/key.pem"
check 'the signature is right' verify pem
check 'the kit is signed with one file and a password' \
    install pfx "TARN_SIGN_PFX=$scratch/both.pfx" "TARN_SIGN_PASSWORD_FILE=$scratch/password"
check 'the signature is right' verify pfx
check 'nothing but the two is different, and what is said of it' same "$(diff -rq unsigned pem)" \
    'Files unsigned/bin/tarn.dll and pem/bin/tarn.dll differ
Files unsigned/bin/tarntool.exe and pem/bin/tarntool.exe differ
Files unsigned/sbom.cdx.json and pem/sbom.cdx.json differ'
check 'the hash in the SBOM is that of the signed library' \
    holds pem/sbom.cdx.json "$(sha256sum pem/bin/tarn.dll | cut -d' ' -f1)"

mkdir -p changed/bin
cp pem/bin/tarntool.exe changed/bin
# One byte of the code
{ head -c 5000 pem/bin/tarn.dll && printf '\x01' && tail -c +5002 pem/bin/tarn.dll; } \
    > changed/bin/tarn.dll
check 'a library that was changed later is noticed' refuses verify changed

# cpack signs, too.
env "TARN_SIGN_PFX=$scratch/both.pfx" "TARN_SIGN_PASSWORD_FILE=$scratch/password" \
    cpack --config "$build/CPackConfig.cmake" -B "$scratch/zip" > cpack.log
check 'the zip' unzip -q "zip/$kit_name.zip" -d from-zip
check 'the signature in the zip is right' verify "from-zip/$kit_name"

# It still is a library.
check 'a program with the signed library' x86_64-w64-mingw32-gcc -Ipem/include \
    pem/samples/c/setup.c pem/lib/libtarn.dll.a -o pem/bin/setup.exe
echo text > file.txt
check 'runs' run 0 pem/bin/setup.exe joe@example.org "$(windows_path "$scratch/out")" file.txt
check 'and works' cmp file.txt out/file.txt

# What is not right ends the installation with a reason.
fails() {
    local reason=$1
    shift
    if install failing "$@" > install.log 2>&1; then
        echo 'it succeeds'
        return 1
    fi
    holds install.log "$reason"
}
check 'a certificate without its key' \
    fails 'needs both TARN_SIGN_CERT and TARN_SIGN_KEY' "TARN_SIGN_CERT=$scratch/cert.pem"
check 'a file that is missing' fails 'Cannot sign tarn.dll' "TARN_SIGN_PFX=$scratch/none.pfx"
check 'a path that is not full' fails 'TARN_SIGN_PFX must be a full path' TARN_SIGN_PFX=both.pfx
echo 'another password' > wrong
check 'a wrong password' fails 'Cannot sign tarn.dll' \
    "TARN_SIGN_PFX=$scratch/both.pfx" "TARN_SIGN_PASSWORD_FILE=$scratch/wrong"
finish
