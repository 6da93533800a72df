# Language level, warnings, visibility and sanitizers of everything that is built here.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 raises false alarms of these kinds in its own std::string once it inlines.
  add_compile_options(-Wno-restrict -Wno-stringop-overread -Wno-stringop-overflow -Wno-array-bounds)
endif()

set(ZKMB_SANITIZERS "" CACHE STRING "Value of -fsanitize= for every target, empty for none")
if(ZKMB_SANITIZERS)
  add_compile_options(-fsanitize=${ZKMB_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${ZKMB_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-maybe-uninitialized)  # false alarms in instrumented variants
  endif()
endif()

option(ZKMB_COVERAGE "Instrument for gcov" OFF)
if(ZKMB_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# Declares the object library NAME of one folder. Its objects go into the shared library and into the tests, which
# thereby reach what the shared library hides.
function(zkmb_component name)
  cmake_parse_arguments(arg "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} OBJECT ${arg_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${arg_USES})
  set_property(GLOBAL APPEND PROPERTY ZKMB_COMPONENTS ${name})
endfunction()
