# cmake -DFROM=page.html -DTO=page.cpp -P embed.cmake: the file as an array of bytes.
file(READ ${FROM} bytes HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
file(WRITE ${TO} "#include \"page.h\"
namespace zox::view {
namespace {
constexpr unsigned char kPage[] = {${bytes}};
}
std::string_view page_text() { return {reinterpret_cast<const char*>(kPage), sizeof kPage}; }
}
")
