#include "service/record_fields.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace tool {
namespace {

constexpr const char* kChannels[] = {"hue, degrees", "saturation, 0 to 255", "value, 0 to 255"};

std::string indexed(const std::string& name, int index) { return name + "[" + std::to_string(index) + "]"; }

/// Gives out the fields in the order of their bytes.
class FieldList {
 public:
  FieldList() {
    add("ver", "faces measured, or the camera's faces where the map has none",
        "5 once a person candidate was seen");
    add("humanRatio", "share of the label map that is person, per cent",
        "share of the label map that is body, per cent");
    for (int block = 0; block < morvale::kMaxFaces; ++block) add_block(block);
  }
  std::array<RecordField, kRecordWords> take() { return std::move(fields_); }

 private:
  void add(std::string name, std::string front, std::string back, bool is_signed = true) {
    fields_[count_] = {std::move(name), count_ * sizeof(int32_t), is_signed, std::move(front),
                       std::move(back)};
    ++count_;
  }

  void add_block(int block) {
    const std::string meta = indexed("meta", block) + ".";
    const bool measured = block < kMeasuredBlocks;
    const std::string face = "face " + std::to_string(block + 1) + ": ";
    const auto front = [&](const std::string& text) { return measured ? face + text : std::string(); };
    add(meta + "brightCount[0]", front("pixels with luma above 200"), "", false);
    add(meta + "brightCount[1]", front("pixels with luma above 230"), "", false);
    add(meta + "faceYavg", front("mean luma, 0 to 255"), "");
    for (int c = 0; c < 3; ++c)
      add(indexed(meta + "hsvMin", c), front("from the mean down to the low band: " + channel(c)), "");
    for (int c = 0; c < 3; ++c) add(indexed(meta + "hsv", c), front("trimmed mean: " + channel(c)), "");
    add(meta + "skinRatio", front("face rectangle per thousand of the enlarged label map"), "");
    for (int c = 0; c < 4; ++c) {
      const bool band = c < 3;
      add(indexed(meta + "box", c),
          band ? front("from the mean up to the high band: " + channel(c)) : std::string(),
          box_word(block, c));
    }
  }

  static std::string channel(int c) { return kChannels[c]; }

  /// On the back camera the first block's box is the person's, in this order; the other blocks' boxes carry
  /// the packed grid, the last word of block 3 the resource hint.
  static std::string box_word(int block, int word) {
    constexpr const char* kBox[] = {"left", "width", "top", "height"};
    constexpr int kGridWords = 9, kHintBlock = 3;
    if (block == 0) return std::string("person box: ") + kBox[word] + ", frame pixels";
    if (block == kHintBlock && word == 3) return "resource hint";
    const int grid_word = (block - 1) * 4 + word;
    if (grid_word >= kGridWords) return "0, behind the occupancy grid";
    const int first = grid_word * 32;
    return "occupancy grid: cells " + std::to_string(first) + " to " +
           std::to_string(std::min(first + 31, 19 * 15 - 1));
  }

  std::array<RecordField, kRecordWords> fields_;
  size_t count_ = 0;
};

}  // namespace

const std::array<RecordField, kRecordWords>& record_fields() {
  static const std::array<RecordField, kRecordWords> fields = FieldList().take();
  return fields;
}

int64_t value_of(const PersonWholeMeta& record, const RecordField& field) {
  int32_t word;
  std::memcpy(&word, reinterpret_cast<const char*>(&record) + field.offset, sizeof word);
  return field.is_signed ? int64_t{word} : int64_t{static_cast<uint32_t>(word)};
}

}  // namespace tool
