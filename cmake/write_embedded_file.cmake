# cmake -DINPUT=file -DOUTPUT=file.cpp -DHEADER=path.h -DFUNCTION=Name -P write_embedded_file.cmake
#
# The bytes are written as numbers of an array, not as a string literal: no byte needs escaping and no compiler limits the
# length of an array. The zero at the end lets an empty file be an array too; it does not count.

file(READ ${INPUT} bytes HEX)
string(LENGTH "${bytes}" digits)
math(EXPR size "${digits} / 2")
string(REPEAT "[0-9a-f]" 48 line_of_digits)
string(REGEX REPLACE "(${line_of_digits})" "\\1\n" bytes "${bytes}")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")

file(WRITE ${OUTPUT} "\
#include \"${HEADER}\"

#include <cstddef>

namespace quillon {

namespace {

constexpr std::size_t kSize = ${size};
constexpr unsigned char kBytes[kSize + 1] = {
${bytes}0};

} // namespace

std::string_view ${FUNCTION}() { return {reinterpret_cast<const char*>(kBytes), kSize}; }

} // namespace quillon
")
