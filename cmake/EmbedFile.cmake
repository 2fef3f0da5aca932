# quillon_embed_file(TARGET FILE HEADER FUNCTION)
#
# Adds a source file to TARGET that defines `std::string_view FUNCTION()`, declared in HEADER: the bytes of FILE, whatever
# they are. Made again whenever FILE changes.

set(QUILLON_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/write_embedded_file.cmake)

function(quillon_embed_file target file header function)
    get_filename_component(name ${header} NAME_WE)
    set(output ${PROJECT_BINARY_DIR}/generated/${name}_bytes.cpp)
    add_custom_command(
        OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DINPUT=${file} -DOUTPUT=${output} -DHEADER=${header} -DFUNCTION=${function}
                -P ${QUILLON_EMBED_SCRIPT}
        DEPENDS ${file} ${QUILLON_EMBED_SCRIPT}
        COMMENT "Embedding ${name}"
        VERBATIM)
    target_sources(${target} PRIVATE ${output})
endfunction()
