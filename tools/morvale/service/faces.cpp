#include "service/faces.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>

#include "common/command.h"
#include "pictures/opencv_module.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;

std::string base_name(const std::string& path) { return std::filesystem::path(path).filename().string(); }

class NoFaces : public FaceSource {
 public:
  std::vector<FaceRect> faces(const Frame&) override { return {}; }
};

/// Reads face lists strictly: a typing error must not silently become "no faces".
class FileFaces : public FaceSource {
 public:
  FileFaces(const std::string& file, const std::vector<std::string>& input_names) : file_(file) {
    const Json document = parse();
    if (!document.is_array() && !document.is_object())
      fail("must be a list of faces or an object from input names to lists");
    for (const std::string& path : input_names) {
      const std::string name = base_name(path);
      if (document.is_object() && document.find(name) == nullptr)
        fail("names no faces for the input '" + name + "'");
      lists_[name] = face_list(document.is_object() ? document.at(name) : document);
    }
  }

  std::vector<FaceRect> faces(const Frame& frame) override { return lists_.at(base_name(frame.input)); }

 private:
  [[noreturn]] void fail(const std::string& why) const {
    throw UsageError("--faces: " + file_ + " " + why + "; see morvale analyze --help.");
  }

  Json parse() const {
    std::ifstream stream(file_);
    if (!stream || std::filesystem::is_directory(file_)) fail("cannot be read");
    constexpr size_t kMostBytes = 4 << 20;  // the faces of some ten thousand pictures
    std::string text(kMostBytes + 1, '\0');
    stream.read(text.data(), std::ssize(text));
    text.resize(static_cast<size_t>(stream.gcount()));
    if (text.size() > kMostBytes) fail("is longer than 4 MiB");
    try {
      return morvale::session::parse_json(text);
    } catch (const morvale::session::JsonError& error) {
      fail(error.what());
    }
  }

  std::vector<FaceRect> face_list(const Json& list) const {
    if (!list.is_array()) fail("must hold lists of faces");
    if (list.elements().size() > morvale::kMaxFaces)
      fail("holds more than " + std::to_string(morvale::kMaxFaces) + " faces for a frame");
    std::vector<FaceRect> faces;
    for (const Json& face : list.elements()) {
      if (!face.is_object() || face.members().size() != 4)
        fail("must give each face as {\"x\", \"y\", \"w\", \"h\"}");
      faces.push_back({field(face, "x"), field(face, "y"), field(face, "w"), field(face, "h")});
      if (faces.back().w < 1 || faces.back().h < 1) fail("holds a face whose w or h is below 1");
    }
    return faces;
  }

  int32_t field(const Json& face, const char* key) const {
    constexpr int32_t kLimit = std::numeric_limits<int32_t>::max() / 2;
    const Json* value = face.find(key);
    if (value == nullptr || !value->is_integer())
      fail(std::string("holds a face without the whole number \"") + key + "\"");
    if (value->number() < -kLimit || value->number() > kLimit)
      fail(std::string("holds a face whose \"") + key + "\" is out of range");
    return value->int32();
  }

  std::string file_;
  std::map<std::string, std::vector<FaceRect>> lists_;
};

}  // namespace

std::unique_ptr<FaceSource> make_face_source(const std::string& mode, const std::string& cascade_file,
                                             const std::vector<std::string>& input_names) {
  if (mode == "none") return std::make_unique<NoFaces>();
  if (mode == "auto") return opencv().make_cascade_faces(cascade_file);
  return std::make_unique<FileFaces>(mode, input_names);
}

}  // namespace tool
