# Compares files with data/SHA256SUMS and stops the build at the first that differ, naming them.
#
#   cmake -DSUMS=FILE -DROOT=FOLDER -DNAMES=REGEX [-DLIST=FILE] -P check_data.cmake
#
# Every line of SUMS whose name matches NAMES is checked in ROOT; at least one must. Tables in ROOT/tab that SUMS does
# not list are left over from another installation and are only mentioned. LIST is written when all is well: checksum,
# size and file name of every table, for the programs to look at.
cmake_minimum_required(VERSION 3.20)

file(STRINGS ${SUMS} lines)
set(seen)
set(list "# SHA-256, bytes and name of every table: 'orbeln-dump verify' compares them.\n")
set(faults)
foreach(line IN LISTS lines)
  if(NOT line MATCHES "^([0-9a-f]+)  (.+)$")
    list(APPEND faults "${SUMS}: cannot read the line '${line}'")
    continue()
  endif()
  set(wanted ${CMAKE_MATCH_1})
  set(name ${CMAKE_MATCH_2})
  if(NOT name MATCHES "${NAMES}")
    continue()
  endif()
  list(APPEND seen ${name})
  if(NOT EXISTS "${ROOT}/${name}")
    list(APPEND faults "${name}: missing in ${ROOT}")
    continue()
  endif()
  file(SHA256 "${ROOT}/${name}" found)
  if(NOT found STREQUAL wanted)
    list(APPEND faults "${name}: damaged or of another version (SHA-256 ${found}, expected ${wanted})")
  endif()
  file(SIZE "${ROOT}/${name}" bytes)
  get_filename_component(table ${name} NAME)
  string(APPEND list "${wanted} ${bytes} ${table}\n")
endforeach()
if(NOT seen)
  list(APPEND faults "${SUMS}: lists nothing that matches ${NAMES}")
endif()
file(GLOB tables RELATIVE "${ROOT}" "${ROOT}/tab/*.tab")
foreach(name IN LISTS tables)
  if("tab/x" MATCHES "${NAMES}" AND NOT name IN_LIST seen)
    message(STATUS "${ROOT}/${name}: not part of this installation")
  endif()
endforeach()
if(faults)
  list(JOIN faults "\n  " text)
  message(FATAL_ERROR "The installation's tables are not those of this version:\n  ${text}\n"
                      "Fetch data/ anew (git checkout -- data) and build again. After packing another installation "
                      "run: make checksums")
endif()
if(LIST)
  file(WRITE ${LIST} "${list}")
endif()
