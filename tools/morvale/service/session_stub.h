#pragma once

#include <morvale/morvale.h>

namespace tool {

/// A runtime session whose operations do nothing but answer that all is well.
class SessionStub : public vexa::VexaSession {
 public:
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>&) override { return 0; }
  int32_t open(vexa::VexaOptionsV2) override { return 0; }
  void close() override {}
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  void reserved6() override {}
  void reserved7() override {}

 protected:
  ~SessionStub() = default;
};

}  // namespace tool
