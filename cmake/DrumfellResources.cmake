# Files built into a program.

set(DRUMFELL_RESOURCES_DIR ${CMAKE_CURRENT_LIST_DIR})

# drumfell_embed_resources(TARGET name RESOURCES name file ...)
#
# Makes the static library TARGET, which holds the bytes of every listed file and defines
#
#     extern "C" const qel::CResourceRow drumfellResourceDirectory[];   // Streams/ResourceMap.h
#
# Names stand for themselves, "../" and all. Files are absolute or relative to the current source directory, and may be
# made by the build. A name listed twice is an error.
#
# There is one assembler source a resource, so a changed file costs one assembler run and no compiler. One program can
# link one such library.
function(drumfell_embed_resources)
    cmake_parse_arguments(arg "" "TARGET" "RESOURCES" ${ARGN})
    if(NOT arg_TARGET OR arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "drumfell_embed_resources(TARGET name RESOURCES name file...)")
    endif()

    set(names)
    set(files)
    while(arg_RESOURCES)
        list(POP_FRONT arg_RESOURCES name file)
        if(NOT file)
            message(FATAL_ERROR "drumfell_embed_resources: resource '${name}' has no file")
        endif()
        get_filename_component(file ${file} ABSOLUTE)
        list(APPEND names ${name})
        list(APPEND files ${file})
    endwhile()

    set(folder ${CMAKE_CURRENT_BINARY_DIR}/${arg_TARGET})
    set(sources ${folder}/Directory.S)
    set(rows)
    set(texts)
    set(labels)
    foreach(name file IN ZIP_LISTS names files)
        if(name MATCHES "[\"\\]")
            message(FATAL_ERROR "drumfell_embed_resources: quote or backslash in the name '${name}'")
        endif()
        # Named by its resource: a new one in the middle leaves the others alone.
        string(MD5 hash "${name}")
        string(SUBSTRING ${hash} 0 16 hash)
        set(label drumfellResource_${hash})
        if(label IN_LIST labels)
            list(FIND labels ${label} place)
            list(GET files ${place} first)
            message(FATAL_ERROR "drumfell_embed_resources: '${name}' is listed twice (${first} and ${file})")
        endif()
        list(APPEND labels ${label})
        set(source ${folder}/${hash}.S)
        configure_file(${DRUMFELL_RESOURCES_DIR}/Resource.S.in ${source} @ONLY)
        set_source_files_properties(${source} PROPERTIES OBJECT_DEPENDS ${file})
        list(APPEND sources ${source})
        string(APPEND rows "    .quad ${label}, .LName_${hash}\n")
        string(APPEND texts ".LName_${hash}:\n    .asciz \"${name}\"\n")
    endforeach()
    configure_file(${DRUMFELL_RESOURCES_DIR}/ResourceDirectory.S.in ${folder}/Directory.S @ONLY)
    add_library(${arg_TARGET} STATIC ${sources})
endfunction()
