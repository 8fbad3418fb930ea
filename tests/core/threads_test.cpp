/// The core's state is the process's, not a thread's: a caller may take each frame to another thread, as long
/// as it hands the core over. An executable of its own, small enough to be built for the thread sanitizer
/// too.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "selfcheck/camera.h"
#include "selfcheck/inputs.h"

namespace morvale::selfcheck {
namespace {

constexpr int kFrontCamera = 16;  // and any other than the back one

/// The figures of a few frames, each of them run by `run`.
Figures figures_of(int camera_type, const std::function<void(const std::function<void()>&)>& run) {
  Sheet sheet;
  Camera camera(camera_type);
  for (int i = 0; i < 6; ++i) {
    run([&] {
      camera.answer_with(ScoreMap(NETSIZE, NETSIZE, static_cast<uint64_t>(i)).blobs(5).network_scores());
      camera.take(nv21_frame(640, 480, static_cast<uint64_t>(i)), 640, 480);
      EXPECT_EQ(camera.run_frame(), 0);
      sheet.add_results(camera.core);
    });
  }
  Figures figures;
  sheet.append_to(figures, "six frames");
  return figures;
}

TEST(Threads, ACallerMayMoveBetweenThem) {
  for (const int camera : {kFrontCamera, kBackCamera}) {
    const Figures alone = figures_of(camera, [](const auto& frame) { frame(); });
    const Figures moving = figures_of(camera, [](const auto& frame) { std::thread(frame).join(); });
    ASSERT_EQ(alone.size(), moving.size());
    for (size_t i = 0; i < alone.size(); ++i) EXPECT_EQ(alone[i].digest, moving[i].digest) << alone[i].name;
  }
}

}  // namespace
}  // namespace morvale::selfcheck
