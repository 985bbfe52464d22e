# Sets SOURCE_DATE_EPOCH, unless it is set: what is made carries the date of the commit, not of the build.
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
  execute_process(
    COMMAND git log -1 --format=%ct
    WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
    OUTPUT_VARIABLE commit_date OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE no_git ERROR_QUIET)
  if(no_git OR NOT commit_date MATCHES "^[0-9]+$")
    set(commit_date 315619200) # without git, the first day after the earliest that a zip can hold
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${commit_date})
endif()
