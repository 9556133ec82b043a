# Writes a C++ source that holds every file under DIRECTORY as bytes, for the library
# to serve without the files beside it. Run as a script:
#   cmake -DDIRECTORY=<folder> -DOUTPUT=<file.cpp> -DHEADER=<include> -DNAMESPACE=<ns>
#         -DTABLE=<name> -P EmbedFiles.cmake
# The table `TABLE` (of the EmbeddedFile records that HEADER declares) lists {name
# relative to DIRECTORY, bytes, size} sorted by name, and `TABLE`Count its length. Each file's bytes end with a NUL that the size leaves out, so
# that an empty file still makes an array.
foreach(variable DIRECTORY OUTPUT HEADER NAMESPACE TABLE)
  if(NOT DEFINED ${variable})
    message(FATAL_ERROR "EmbedFiles.cmake: ${variable} is not set")
  endif()
endforeach()

file(GLOB_RECURSE files RELATIVE ${DIRECTORY} ${DIRECTORY}/*)
list(SORT files)

set(arrays "")
set(entries "")
set(index 0)
foreach(name IN LISTS files)
  file(READ ${DIRECTORY}/${name} hex HEX)
  string(LENGTH "${hex}" digits)
  math(EXPR size "${digits} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
  string(REGEX REPLACE "((0x..,){20})" "\\1\n    " bytes "${bytes}")
  string(APPEND arrays "// ${name}\nconst unsigned char file${index}[] = {\n    ${bytes}0x00};\n\n")
  string(APPEND entries "    {\"${name}\", file${index}, ${size}},\n")
  math(EXPR index "${index} + 1")
endforeach()
if(index EQUAL 0)
  message(FATAL_ERROR "EmbedFiles.cmake: no file under ${DIRECTORY}")
endif()

get_filename_component(folder ${DIRECTORY} NAME)
set(text "// Generated from the files of ${folder}/ by cmake/EmbedFiles.cmake: do not edit.
#include <${HEADER}>

namespace ${NAMESPACE} {
namespace {

${arrays}}  // namespace

extern const EmbeddedFile ${TABLE}[] = {
${entries}};
extern const unsigned int ${TABLE}Count = ${index};

}  // namespace ${NAMESPACE}
")
file(WRITE ${OUTPUT} "${text}")
