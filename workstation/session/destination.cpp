#include "session/destination.h"

#include <unistd.h>

#include <system_error>

#include "session/file.h"
#include "session/frame_files.h"
#include "session/parts.h"
#include "session/tar.h"

namespace morvale::session {
namespace {

namespace fs = std::filesystem;

void make_folder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw BundleError(folder.string() + ": cannot be made: " + error.message());
}

void new_folder(const fs::path& folder) {
  make_folder(folder);
  std::error_code error;
  const bool empty = fs::is_empty(folder, error);
  if (error) throw BundleError(folder.string() + ": " + error.message());
  if (!empty) throw BundleError(folder.string() + ": is not empty; a bundle needs a folder of its own");
}

void write_whole(const fs::path& path, std::span<const uint8_t> bytes) {
  OutputFile file(path);
  file.write(bytes.data(), bytes.size());
  file.close();
}

std::span<const uint8_t> bytes_of(const std::string& text) {
  return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

class FolderDestination final : public Destination {
 public:
  FolderDestination(const fs::path& folder, const std::string& session)
      : folder_(folder), metadata_(folder / kMetadataFile), records_(folder / kRecordsFile) {
    make_folder(folder_ / "frames");
    make_folder(folder_ / "logits");
    // Last and by one rename: where there is a session.json, the other files are there too.
    const fs::path fresh = folder_ / "session.json.part";
    write_whole(fresh, bytes_of(session));
    fs::rename(fresh, folder_ / kSessionFile);
  }

  void add(const std::vector<NewPart>& parts, const PersonWholeMeta& record,
           const std::string& line) override {
    for (const NewPart& part : parts) {
      const fs::path path = folder_ / part.name;
      if (!part.name.starts_with("frames/") && !part.name.starts_with("logits/"))
        make_folder(path.parent_path());
      write_whole(path, part.bytes);
    }
    records_.write(&record, sizeof record);
    metadata_.write(line.data(), line.size());
  }

  void finish() override {
    records_.close();
    metadata_.close();
  }

 private:
  fs::path folder_;
  OutputFile metadata_, records_;
};

/// Under another name until it is whole.
class PackedDestination final : public Destination {
 public:
  explicit PackedDestination(const fs::path& file)
      : file_(file), fresh_(file.string() + ".part" + std::to_string(getpid())), tar_(fresh_) {}
  ~PackedDestination() override {
    std::error_code ignored;
    if (!finished_) fs::remove(fresh_, ignored);
  }

  void begin(const std::string& session) { tar_.add(kSessionFile, bytes_of(session)); }

  void add(const std::vector<NewPart>& parts, const PersonWholeMeta& record,
           const std::string& line) override {
    for (const NewPart& part : parts) tar_.add(part.name, part.bytes);
    records_.append(reinterpret_cast<const char*>(&record), sizeof record);
    lines_ += line;
  }

  void finish() override {
    tar_.add(kRecordsFile, bytes_of(records_));
    tar_.add(kMetadataFile, bytes_of(lines_));
    tar_.finish();
    fs::rename(fresh_, file_);
    finished_ = true;
  }

 private:
  fs::path file_, fresh_;
  TarWriter tar_;
  std::string records_, lines_;
  bool finished_ = false;
};

std::unique_ptr<Destination> new_folder_destination(const fs::path& folder, const std::string& session) {
  new_folder(folder);
  try {
    return std::make_unique<FolderDestination>(folder, session);
  } catch (...) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);  // a folder without a session would stop whoever replays all of them
    throw;
  }
}

std::unique_ptr<Destination> new_packed_destination(const fs::path& file, const std::string& session) {
  std::error_code error;
  if (fs::exists(file, error)) throw BundleError(file.string() + ": exists already; name another file");
  auto packed = std::make_unique<PackedDestination>(file);
  packed->begin(session);
  return packed;
}

}  // namespace

std::unique_ptr<Destination> new_destination(const fs::path& bundle, const std::string& session) {
  const bool packed = bundle.extension() == kPackedExtension;
  return packed ? new_packed_destination(bundle, session) : new_folder_destination(bundle, session);
}

}  // namespace morvale::session
