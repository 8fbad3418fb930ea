/// What the library requires of the platform's closed neural runtime, libvexa_vndk: two factory functions,
/// three virtual operations found by position, and the records that cross the boundary. The layouts are the
/// runtime's.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vexa {

/// One tensor. Copying copies the pointer, not the elements; destroying frees only the shape. Input elements
/// belong to the core, output elements to the runtime.
struct DataBuffer {
  void* data = nullptr;
  std::vector<int32_t> shape;  ///< outermost dimension first; the input is {1, PADSIZE, PADSIZE, 3}
  int32_t tail0 = 0;           ///< the core sets 0 in its input
  int32_t tail1 = 0;           ///< the core sets 1 in its input
};

/// Options of open. The meaning of the numbered fields is the runtime's; the values are what the core passes.
struct VexaOptions {
  int32_t field1 = 2;
  int32_t field2 = 3;
  int32_t field3 = 1;
  std::vector<std::string> inputNames;
  std::vector<std::string> outputNames;
  std::vector<float> field6;
  std::vector<float> field7;
  std::vector<float> field8;
  std::string modelPath;
  std::string field10;
  int32_t field11 = -1;
  bool field12 = false;
};

struct VexaOptionsV2 : VexaOptions {
  std::vector<uint8_t> field13;
  bool field14 = false;
  int64_t field15 = 0;
  int32_t field16 = 1;
  std::string field17;
  std::vector<std::vector<int32_t>> field18;
  int32_t field19 = 2;
  int32_t field20 = 3;
  uint8_t field21[24] = {};
};

// The records hold objects of the C++ library, so their layout is its choice: the runtime and this library
// must be built with the same one. These are the two that were proved.
#if defined(_LIBCPP_VERSION)
static_assert(sizeof(std::string) == 24 && sizeof(VexaOptions) == 192 && sizeof(VexaOptionsV2) == 320);
#elif defined(__GLIBCXX__)
static_assert(sizeof(std::string) == 32 && sizeof(VexaOptions) == 208 && sizeof(VexaOptionsV2) == 344);
#endif
static_assert(sizeof(void*) == 8 && sizeof(std::vector<int32_t>) == 24);
static_assert(sizeof(DataBuffer) == 40 && offsetof(DataBuffer, shape) == 8 &&
              offsetof(DataBuffer, tail0) == 32);

/// A model session. The core calls the fourth, fifth and eighth operation; the others only keep the
/// positions. There is no virtual destructor: it would take two slots ahead and move every position behind
/// it.
class VexaSession {
 public:
  virtual void reserved1() = 0;
  virtual void reserved2() = 0;
  virtual void reserved3() = 0;

  /// Runs the model on the one input and appends its outputs, element 0 being NETSIZE x NETSIZE x 5 float32,
  /// cell by cell. Returns 0 on success. `outputs` is empty on entry; its elements stay the runtime's.
  virtual int32_t execute(std::vector<DataBuffer>& inputs, std::vector<DataBuffer>& outputs) = 0;

  /// Called once, before the session is destroyed.
  virtual void close() = 0;

  virtual void reserved6() = 0;
  virtual void reserved7() = 0;

  /// Returns 0 when the model is ready, 1 when it could not be opened, 2 when it is too slow to be used.
  virtual int32_t open(VexaOptionsV2 options) = 0;

 protected:
  ~VexaSession() = default;
};

}  // namespace vexa

extern "C" {
vexa::VexaSession* CreateVexaSession();
void DestroyVexaSession(vexa::VexaSession* session);
}
