# Writes the compiled-in USB vendor table from usb.ids:
#   cmake -DUSB_IDS=/usr/share/misc/usb.ids -DOUTPUT=.../QVIOKitUsbHardwareVendorRows.cpp -P GenerateUsbVendorTable.cmake
# Every vendor line "vvvv  Name" of the database gives a row keyed by the id in decimal.
# A few rows are fixed here and override the database; ids 0 and 65535 (no vendor) give
# no row. Runs with CMake alone, so no other interpreter is needed to build.

if(NOT USB_IDS OR NOT OUTPUT)
  message(FATAL_ERROR "GenerateUsbVendorTable.cmake needs -DUSB_IDS=<usb.ids> and -DOUTPUT=<file>")
endif()
if(NOT EXISTS "${USB_IDS}")
  message(FATAL_ERROR "The USB id database ${USB_IDS} does not exist (install Debian's usb.ids package).")
endif()

cmake_minimum_required(VERSION 3.25)

# Rows that stand as written, whatever the database says.
set(fixed_ids 1 1003 1027 1118 1133 1452 2389 4318 56848 8888 60186)
set(fixed_name_1 "Kavi-EVAL")
set(fixed_name_1003 "Atmel Corporation")
set(fixed_name_1027 "Future Technology Devices International Limited")
set(fixed_name_1118 "Microsoft Corporation")
set(fixed_name_1133 "Logitech Inc.")
set(fixed_name_1452 "Apple, Inc.")
set(fixed_name_2389 "NVIDIA")
set(fixed_name_4318 "NVIDIA")
set(fixed_name_56848 "NVIDIA")
set(fixed_name_8888 "Motorola MDS")
set(fixed_name_60186 "Empia Technology, Inc.")

# The text as a C++ string literal: backslashes and quotes escaped, and a question mark
# escaped too, so no name can form a trigraph-like sequence.
function(cxx_literal text out)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  string(REPLACE "?" "\\?" text "${text}")
  set(${out} "\"${text}\"" PARENT_SCOPE)
endfunction()

file(READ "${USB_IDS}" database)
# CMake lists split on ";" and group by brackets: park both before splitting lines.
string(REPLACE ";" "@SEMICOLON@" database "${database}")
string(REPLACE "[" "@OPEN@" database "${database}")
string(REPLACE "]" "@CLOSE@" database "${database}")
string(REPLACE "\r" "" database "${database}")
string(REPLACE "\n" ";" lines "${database}")

set(rows "")
set(row_count 0)
foreach(line IN LISTS lines)
  # The vendor section ends where the device classes begin.
  if(line MATCHES "^C ")
    break()
  endif()
  if(NOT line MATCHES "^([0-9a-f][0-9a-f][0-9a-f][0-9a-f])  (.+)$")
    continue()
  endif()
  set(hex "${CMAKE_MATCH_1}")
  string(STRIP "${CMAKE_MATCH_2}" name)
  math(EXPR id "0x${hex}" OUTPUT_FORMAT DECIMAL)
  if(id EQUAL 0 OR id EQUAL 65535 OR id IN_LIST fixed_ids OR name STREQUAL "")
    continue()
  endif()
  string(REPLACE "@SEMICOLON@" ";" name "${name}")
  string(REPLACE "@OPEN@" "[" name "${name}")
  string(REPLACE "@CLOSE@" "]" name "${name}")
  cxx_literal("${name}" literal)
  string(APPEND rows "    {\"${id}\", ${literal}},\n")
  math(EXPR row_count "${row_count} + 1")
endforeach()

foreach(id IN LISTS fixed_ids)
  cxx_literal("${fixed_name_${id}}" literal)
  string(APPEND rows "    {\"${id}\", ${literal}},\n")
  math(EXPR row_count "${row_count} + 1")
endforeach()

set(content "// Generated from ${USB_IDS} by cmake/GenerateUsbVendorTable.cmake; do not edit.

#include \"discovery/QVIOKitUsbHardwareVendorRows.h\"

namespace tov {

const UsbVendorRow kUsbVendorRows[] = {
${rows}};

const std::size_t kUsbVendorRowCount = ${row_count};

}  // namespace tov
")

# Rewrite only on change, so an unchanged database rebuilds nothing.
set(existing "")
if(EXISTS "${OUTPUT}")
  file(READ "${OUTPUT}" existing)
endif()
if(NOT existing STREQUAL content)
  file(WRITE "${OUTPUT}" "${content}")
endif()
