// Names and routing of channels and groups, as the audio side has them.
#pragma once

#include "CAudioInterfaceClient.h"

#include <vector>

namespace qel::layout {

// The parameters that hold them. Channels and groups count from 0; a route to host channel n is the value
// n + 1, and 0 none.
constexpr const char* kInChannelNames = "plugin.modMain.io-params.in-channel-names";
constexpr const char* kGroupNames = "plugin.modMain.io-params.group-names";
constexpr const char* kInRouting = "plugin.modMain.io-params.in-routing";
constexpr const char* kOutRouting = "plugin.modMain.io-params.out-routing";
constexpr const char* kGrouping = "plugin.modMain.io-params.grouping";

// The name that the user gave, or else the number, counted from 1.
CString groupName(CAudioInterfaceClient& client, std::int32_t group);
// The label of a host's input, or else "IN" and the number.
CString inputName(CAudioInterfaceClient& client, std::int32_t input);
// "OUT" and the number: outputs have no labels.
CString outputName(std::int32_t output);
// The host's channel that an internal channel comes from or goes to, or -1.
std::int32_t inputOf(CAudioInterfaceClient& client, std::int32_t channel);
std::int32_t outputOf(CAudioInterfaceClient& client, std::int32_t channel);
std::int32_t groupOf(CAudioInterfaceClient& client, std::int32_t channel);

} // namespace qel::layout
