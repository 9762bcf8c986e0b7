# Turns a binary file into a C++ source that holds its bytes, so a program can carry an image
# inside itself. Run as a script:
#   cmake -DINPUT=file -DOUTPUT=file.cpp -DNAME=symbol -P EmbedFile.cmake
# The source defines `const unsigned char NAME[]` and `const unsigned long NAME_size`.
file(READ ${INPUT} bytes HEX)
string(LENGTH "${bytes}" hex_length)
math(EXPR size "${hex_length} / 2")
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
# Sixteen bytes to a line keeps the generated file readable.
string(REGEX REPLACE "((0x..,){16})" "\\1\n    " bytes "${bytes}")
file(WRITE ${OUTPUT}
  "// Generated from ${INPUT}: do not edit.\n"
  "extern const unsigned char ${NAME}[];\n"
  "extern const unsigned long ${NAME}_size;\n"
  "const unsigned char ${NAME}[] = {\n    ${bytes}\n};\n"
  "const unsigned long ${NAME}_size = ${size};\n")
