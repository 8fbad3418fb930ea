/// What the benchmark measures: a job, the ways to do it, and what moving its data costs.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// Does the job once. Only this is timed.
using Work = std::function<void()>;

/// Makes a way's memory and gives the work on it.
using Way = std::function<Work()>;

struct Peer {
  std::string name;  ///< the library, and after a colon how it is called where that is not the obvious way
  Way way;
  /// Whether it competes. A way that does clearly less or more than the job is shown, but is not one to beat.
  bool rival = true;
};

/// How long ours may take, as a share of another way's time. 0: no target.
struct Target {
  double of_fastest_peer = 0;
  double of_portable = 0;
};

struct Job {
  std::string name;
  std::string differs;  ///< what the peers do differently, one line
  Target target;
  Way ours;
  std::vector<Peer> peers;
  Way floor;
};

/// One point of a curve: a job at one size.
struct GrowthPoint {
  std::string curve;
  int x;  ///< source pixels, or regions
  int source_pixels, output_pixels;
  Way ours;
  Peer peer;
};

using Jobs = std::vector<Job>;

Jobs color_jobs();
Jobs shrink_jobs();
Jobs plane_jobs();
Jobs rotate_jobs();
Jobs network_jobs();
Jobs analysis_jobs();
Jobs frame_jobs();
std::vector<GrowthPoint> growth_points();

}  // namespace bench
