# Run by "cmake --install" and cpack: signs the installed tarn.dll and tarntool.exe (Authenticode), if
# the environment names a certificate, by full paths:
#
#   TARN_SIGN_PFX                     certificate and key in one file (PKCS #12), or
#   TARN_SIGN_CERT, TARN_SIGN_KEY     one file each (PEM)
#   TARN_SIGN_PASSWORD_FILE           optional: the file that holds the key's password
#   TARN_SIGN_TIMESTAMP_URL           optional: a time stamping service (RFC 3161)
if("$ENV{TARN_SIGN_PFX}$ENV{TARN_SIGN_CERT}$ENV{TARN_SIGN_KEY}" STREQUAL "")
  return()
endif()

if(NOT "$ENV{TARN_SIGN_PFX}" STREQUAL "")
  set(arguments -pkcs12 $ENV{TARN_SIGN_PFX})
elseif("$ENV{TARN_SIGN_CERT}" STREQUAL "" OR "$ENV{TARN_SIGN_KEY}" STREQUAL "")
  message(FATAL_ERROR "Signing needs both TARN_SIGN_CERT and TARN_SIGN_KEY, or TARN_SIGN_PFX.")
else()
  set(arguments -certs $ENV{TARN_SIGN_CERT} -key $ENV{TARN_SIGN_KEY})
endif()
if(NOT "$ENV{TARN_SIGN_PASSWORD_FILE}" STREQUAL "")
  list(APPEND arguments -readpass $ENV{TARN_SIGN_PASSWORD_FILE})
endif()
if(NOT "$ENV{TARN_SIGN_TIMESTAMP_URL}" STREQUAL "")
  list(APPEND arguments -ts $ENV{TARN_SIGN_TIMESTAMP_URL})
endif()

foreach(variable PFX CERT KEY PASSWORD_FILE)
  set(file $ENV{TARN_SIGN_${variable}})
  if(file AND NOT IS_ABSOLUTE "${file}")
    message(FATAL_ERROR "TARN_SIGN_${variable} must be a full path, and is: ${file}")
  endif()
endforeach()

foreach(name tarn.dll tarntool.exe)
  set(file $ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}/bin/${name})
  message(STATUS "Signing: ${file}")
  file(REMOVE ${file}.signed)
  execute_process(
    COMMAND osslsigncode sign ${arguments} -h sha256 -in ${file} -out ${file}.signed
    RESULT_VARIABLE failed OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(failed)
    file(REMOVE ${file}.signed)
    message(FATAL_ERROR "Cannot sign ${name} with osslsigncode (${failed}):\n${output}")
  endif()
  file(RENAME ${file}.signed ${file})
endforeach()
