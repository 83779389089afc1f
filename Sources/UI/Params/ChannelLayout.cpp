// Names and routing of channels and groups, as the audio side has them.
#include "ChannelLayout.h"

#include "DisplayNumber.h"

namespace qel::layout {

namespace {

CString textAt(CAudioInterfaceClient& client, const char* param, std::int32_t entry)
{
    return client.watchParam(param).values.getString(0, entry);
}

std::int32_t numberAt(CAudioInterfaceClient& client, const char* param, std::int32_t entry)
{
    return static_cast<std::int32_t>(roundHalfAway(client.watchParam(param).values.get(0, entry)));
}

} // namespace

CString groupName(CAudioInterfaceClient& client, std::int32_t group)
{
    const CString name = textAt(client, kGroupNames, group);
    return name.isEmpty() ? CString::number(group + 1) : name;
}

CString inputName(CAudioInterfaceClient& client, std::int32_t input)
{
    const CString name = textAt(client, kInChannelNames, input);
    return name.isEmpty() ? CString("IN") + CString::number(input + 1) : name;
}

CString outputName(std::int32_t output)
{
    return CString("OUT") + CString::number(output + 1);
}

std::int32_t inputOf(CAudioInterfaceClient& client, std::int32_t channel)
{
    return numberAt(client, kInRouting, channel) - 1;
}

std::int32_t outputOf(CAudioInterfaceClient& client, std::int32_t channel)
{
    return numberAt(client, kOutRouting, channel) - 1;
}

std::int32_t groupOf(CAudioInterfaceClient& client, std::int32_t channel)
{
    return numberAt(client, kGrouping, channel);
}

} // namespace qel::layout
