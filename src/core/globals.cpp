#include <morvale/core/globals.h>

int32_t PADSIZE = 256;
int32_t NETSIZE = 64;
int32_t VISUALDEBUG = 0;
int32_t N0 = 0, N1 = 0, N2 = 0;
uint8_t N_segResult_Front[morvale::kRingSlots * morvale::kRingSlotBytes] = {};
uint8_t N_segResult_Back[morvale::kRingSlots * morvale::kRingSlotBytes] = {};
vexa::VexaSession* session_ = nullptr;
vexa::DataBuffer input;
std::vector<vexa::DataBuffer> inputs, outputs;
