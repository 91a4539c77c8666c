# One target a room. A room's headers are visible only to targets that link it: each room has an include
# folder of its own in the build tree that holds nothing but a link to the room, so an include of a room
# that is not linked does not compile.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

add_library(korvell_options INTERFACE)
# Designated initialisers leave the other fields at their defaults on purpose.
target_compile_options(korvell_options INTERFACE -Wall -Wextra -Wpedantic -Wno-missing-field-initializers)
if(KORVELL_WERROR)
  target_compile_options(korvell_options INTERFACE -Werror)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  # Line numbers are what a report of a sanitizer needs; more makes building several times slower.
  set(CMAKE_CXX_FLAGS_DEBUG "-g1")
  find_program(LLD ld.lld)
  if(LLD AND NOT APPLE)
    target_link_options(korvell_options INTERFACE -fuse-ld=lld)
  endif()
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # That compiler takes "text" + std::string for an overlapping copy once it inlines it (its bug 105651).
    target_compile_options(korvell_options INTERFACE -Wno-restrict)
  endif()
  # Unused functions of the rooms do not travel into the programs, nor do the libraries that only those need.
  target_compile_options(korvell_options INTERFACE -ffunction-sections -fdata-sections)
  if(APPLE)
    target_link_options(korvell_options INTERFACE -Wl,-dead_strip -Wl,-dead_strip_dylibs)
  else()
    target_link_options(korvell_options INTERFACE -Wl,--gc-sections -Wl,--as-needed)
  endif()
endif()

# The standard library and the test framework, parsed once: two thirds of what compiling a file costs. Only where
# tests or fuzz targets are built; other builds compile every file as it stands, so that a missing include is found.
set(is_checked ${KORVELL_TESTS})
if(KORVELL_FUZZ)
  set(is_checked ON)
endif()
option(KORVELL_PRECOMPILE "Precompile the standard library's headers" ${is_checked})
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/precompiled)
foreach(kind IN ITEMS korvell_precompiled korvell_tests_precompiled)
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/precompiled/${kind}.cpp CONTENT "")
  if(KORVELL_PRECOMPILE)
    add_library(${kind} OBJECT ${CMAKE_BINARY_DIR}/precompiled/${kind}.cpp)
    target_link_libraries(${kind} PRIVATE korvell_options fmt::fmt Threads::Threads)
    target_precompile_headers(${kind} PRIVATE
      <algorithm> <array> <chrono> <cmath> <cstdint> <filesystem> <functional> <map> <memory> <mutex> <optional>
      <set> <span> <string> <string_view> <thread> <tuple> <unordered_map> <utility> <variant> <vector>
      <fmt/format.h>)
  endif()
endforeach()

# The toolkit's headers, for the rooms that paint. They are compiled position-independent, which the others are
# not, and so cannot share the others' precompiled ones.
if(KORVELL_UI)
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/precompiled/korvell_toolkit_precompiled.cpp CONTENT "")
  if(KORVELL_PRECOMPILE)
    add_library(korvell_toolkit_precompiled OBJECT
      ${CMAKE_BINARY_DIR}/precompiled/korvell_toolkit_precompiled.cpp)
    target_link_libraries(korvell_toolkit_precompiled PRIVATE korvell_options Threads::Threads Qt6::Widgets)
    target_compile_definitions(korvell_toolkit_precompiled PRIVATE QT_NO_KEYWORDS)
    target_precompile_headers(korvell_toolkit_precompiled PRIVATE
      <algorithm> <array> <cmath> <functional> <memory> <optional> <string> <string_view> <utility> <vector>
      <QAccessible> <QEvent> <QPainter> <QPainterPath> <QWidget>)
  endif()
endif()

add_custom_target(precompiled_headers)
foreach(kind IN ITEMS korvell_precompiled korvell_tests_precompiled korvell_toolkit_precompiled)
  if(TARGET ${kind})
    add_dependencies(precompiled_headers ${kind})
  endif()
endforeach()

# korvell_precompile(TARGET KIND): the target starts from that one's headers.
function(korvell_precompile target kind)
  if(KORVELL_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${kind})
  endif()
endfunction()

# Compiles a room for size: for code that waits for people, not for processors. Resident all day, the program's
# own pages are the largest part of what the keeper takes.
function(korvell_compile_small room)
  target_compile_options(${room} PRIVATE $<$<CONFIG:Release>:-Os>)
endfunction()

if(KORVELL_SANITIZE)
  target_compile_options(korvell_options INTERFACE
    -fsanitize=${KORVELL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(korvell_options INTERFACE -fsanitize=${KORVELL_SANITIZE})
endif()
if(KORVELL_FUZZ)
  target_compile_options(korvell_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# korvell_room(NAME [TOOLKIT] [SOURCES file...] [LINKS target...])
# The room is the calling folder. Without sources it is a room of headers. TOOLKIT: it includes Qt.
# PRIVATE_LINKS stay invisible to whoever links the room.
function(korvell_room name)
  cmake_parse_arguments(room "TOOLKIT" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  file(RELATIVE_PATH path ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  get_filename_component(parent ${path} DIRECTORY)
  set(include ${CMAKE_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${include}/${parent})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${include}/${path} SYMBOLIC)
  if(room_SOURCES)
    add_library(${name} STATIC ${room_SOURCES})
    target_include_directories(${name} PUBLIC ${include})
    target_link_libraries(${name} PUBLIC ${room_LINKS} PRIVATE korvell_options ${room_PRIVATE_LINKS})
    if(room_TOOLKIT)
      # Its words for signals and slots are ours for other things.
      target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS)
      korvell_precompile(${name} korvell_toolkit_precompiled)
    else()
      korvell_precompile(${name} korvell_precompiled)
    endif()
  else()
    add_library(${name} INTERFACE)
    target_include_directories(${name} INTERFACE ${include})
    target_link_libraries(${name} INTERFACE ${room_LINKS})
  endif()
endfunction()

# korvell_tests(NAME [THREADS] [TOOLKIT] SOURCES file... LINKS target...): one test program a room, every case
# known to CTest. THREADS says that its cases start threads: those are what the thread sanitizer builds and runs.
# TOOLKIT says that it includes Qt; such tests need no display.
add_custom_target(threaded_tests)
function(korvell_tests name)
  cmake_parse_arguments(tests "THREADS;TOOLKIT" "" "SOURCES;LINKS" ${ARGN})
  add_executable(${name} ${tests_SOURCES})
  target_link_libraries(${name} PRIVATE korvell_options ${tests_LINKS} FixturesFolder GTest::gmock GTest::gtest_main)
  set(precompiled korvell_tests_precompiled)
  set(environment)
  if(tests_TOOLKIT)
    set(precompiled korvell_toolkit_precompiled)
    set(environment ENVIRONMENT QT_QPA_PLATFORM=offscreen)
  endif()
  korvell_precompile(${name} ${precompiled})
  set(labels)
  if(tests_THREADS)
    add_dependencies(threaded_tests ${name})
    set(labels LABELS threads)
  endif()
  gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 ${labels} ${environment})
endfunction()
