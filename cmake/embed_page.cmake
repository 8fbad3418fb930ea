# Writes SOURCE, a C++ file whose report_template() gives the bytes of the file PAGE.
file(READ ${PAGE} hex HEX)
string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
string(REGEX REPLACE "('[^']*',)('[^']*',)('[^']*',)('[^']*',)('[^']*',)('[^']*',)('[^']*',)('[^']*',)"
  "\\1\\2\\3\\4\\5\\6\\7\\8\n" bytes "${bytes}")
file(WRITE ${SOURCE} "#include \"report/report_template.h\"

namespace {
// The last byte keeps the array from being empty and is not part of the page.
constexpr char kPage[] = {
${bytes}'\\0'};
}  // namespace

std::string_view tool::report_template() { return {kPage, sizeof kPage - 1}; }
")
