# Read by cpack: the zip's files carry the date of the commit.
include(${CMAKE_CURRENT_LIST_DIR}/source-date.cmake)
