# Build settings shared by all targets, and drumfell_layer(), which declares one layer of the program.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1")

# Half of a source's time is the headers it includes and the templates it makes of them, the same in all sources of a
# layer. Off by default: whoever changes one source compiles that one.
option(DRUMFELL_UNITY "Compile the sources of a layer together, for builds from nothing" OFF)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM)
    set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

# The order of floating-point operations is part of the product: no contraction, no reassociation.
# Source paths in error lines are relative to the repository.
# (ccache with a base_dir, which shares results between checkouts, names sources relative to the build folder.)
file(RELATIVE_PATH source_from_build ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
add_compile_options(-ffp-contract=off -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/= -fmacro-prefix-map=${source_from_build}=)
if(DRUMFELL_SANITIZE)
    add_compile_options(-fsanitize=${DRUMFELL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${DRUMFELL_SANITIZE})
endif()
if(DRUMFELL_LIBFUZZER)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

add_library(drumfell_warnings INTERFACE)
target_compile_options(drumfell_warnings INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Werror>)

# drumfell_unity(TARGET): a target whose sources may be compiled together, a dozen at a time.
function(drumfell_unity target)
    if(DRUMFELL_UNITY)
        set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 12)
    endif()
endfunction()

# drumfell_layer(NAME [FOLDER folder] [LINKS layer...]): a static library of all sources below Sources/FOLDER (NAME,
# where none is given). Its include root is that folder, so a layer sees its own headers and those of the layers it
# links, and nothing else.
function(drumfell_layer name)
    cmake_parse_arguments(arg "" "FOLDER" "LINKS" ${ARGN})
    if(NOT arg_FOLDER)
        set(arg_FOLDER ${name})
    endif()
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${arg_FOLDER}/*.cpp)
    if(WIN32)
        list(FILTER sources EXCLUDE REGEX "/Linux/")
    else()
        list(FILTER sources EXCLUDE REGEX "/Windows/")
    endif()
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${CMAKE_CURRENT_SOURCE_DIR}/${arg_FOLDER})
        target_link_libraries(${name} INTERFACE ${arg_LINKS})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/${arg_FOLDER})
    target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>)
    target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE drumfell_warnings)
    drumfell_unity(${name})
endfunction()
