# cmake -DDESCRIPTION=<xml> -DSEED=<json> -DOUTPUT=<cpp> -P EmbedText.cmake
# Writes the emulator's own description and seed as a source file, byte by byte (compilers limit the length of one
# string literal).
function(to_literal file result)
    file(READ "${file}" hex HEX)
    string(LENGTH "${hex}" length)
    set(bytes "")
    set(at 0)
    while(at LESS length)
        string(SUBSTRING "${hex}" ${at} 64 line)
        string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," line "${line}")
        string(APPEND bytes "    ${line}\n")
        math(EXPR at "${at} + 64")
    endwhile()
    set(${result} "${bytes}" PARENT_SCOPE)
endfunction()

to_literal("${DESCRIPTION}" description)
to_literal("${SEED}" seed)
file(WRITE "${OUTPUT}" "#include \"camera_emulator/BuiltIn.h\"

namespace emu
{
namespace
{

const unsigned char kDescription[] = {
${description}};

const unsigned char kSeed[] = {
${seed}};

} // namespace

const std::string& builtInDescription()
{
    static const std::string text(reinterpret_cast<const char*>(kDescription), sizeof kDescription);
    return text;
}

const std::string& builtInSeed()
{
    static const std::string text(reinterpret_cast<const char*>(kSeed), sizeof kSeed);
    return text;
}

} // namespace emu
")
