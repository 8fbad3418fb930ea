/// The library's process-wide state: one set, shared by every MorvaleCore, so only one core may be live at a
/// time and all calls into it must come from one thread at a time.
///
/// Four pieces of state are the library's own and are not exported: the kernels in use and those that can run
/// (src/kernels/kernel_set.cpp, chosen when the library is loaded), the names of the latter
/// (src/kernels/processor.cpp), the session that was destroyed (src/core/session.cpp) and the analyses'
/// scratch memory (src/analysis/scratch.cpp, freed by Morvale_core_deinit).
#pragma once

#include <cstdint>
#include <vector>

#include <morvale/core/export.h>
#include <morvale/core/vexa_runtime.h>

/// Side of the square network input in pixels: 256 (front model) or 128 (back model). Morvale_core_setModel.
extern MORVALE_API int32_t PADSIZE;

/// Side of the square network output in cells, always PADSIZE / 4. Morvale_core_setModel.
extern MORVALE_API int32_t NETSIZE;

/// Debug level from the property "persist.morvale.capture.debug". From 1 on more is logged and debug drawings
/// go into the caller's luma plane. Morvale_core_init.
extern MORVALE_API int32_t VISUALDEBUG;

/// The rings of label maps. A slot holds NETSIZE x NETSIZE cells of five bytes, the scores of labels 0..4.
/// N0 is the slot that the next frame writes, N1 the slot of the previous frame (the smoothing partner), N2
/// is unused. Morvale_core_init sets 1, 0, 0; Morvale_core_afterProcss advances.
extern MORVALE_API int32_t N0, N1, N2;
extern MORVALE_API uint8_t N_segResult_Front[983040];
extern MORVALE_API uint8_t N_segResult_Back[983040];

namespace morvale {

/// Labels of the network, scores of a cell.
constexpr int32_t kLabels = 5;

constexpr int32_t kRingSlots = 3;
constexpr int32_t kRingSlotBytes = 256 * 256 * kLabels;
static_assert(sizeof(N_segResult_Front) == kRingSlots * kRingSlotBytes);

}  // namespace morvale

/// The runtime session and the tensor descriptors handed to it. Created by Morvale_core_setModel, used by
/// Morvale_process, released by Morvale_core_deinit (session_ keeps its stale value).
extern MORVALE_API vexa::VexaSession* session_;
extern MORVALE_API vexa::DataBuffer input;
extern MORVALE_API std::vector<vexa::DataBuffer> inputs, outputs;
