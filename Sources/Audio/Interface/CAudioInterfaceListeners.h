// What objects of the user interface implement to be told of the audio side.
#pragma once

#include "CAudioVizData.h"
#include "CCheckedObject.h"
#include "InterfaceRecords.h"

namespace qel {

// All are called on the thread of the UI tree, and leave their client before they end.

class CAudioInterfaceParamListener : public CCheckedObject
{
public:
    // The client's copy of this parameter has changed.
    virtual void onParamUpdate(const CString& param) = 0;
};

class CAudioInterfaceRegistryListener : public CCheckedObject
{
public:
    virtual void onRegistryState(const record::CRegistryState& state) { (void)state; }
    virtual void onRegistryData(const record::CRegistryData& data) { (void)data; }
    virtual void onHistoryState(const record::CHistoryState& state) { (void)state; }
};

class CAudioInterfaceVizProcessor : public CCheckedObject
{
public:
    virtual void onVizSource(const CString& source, std::int32_t id) = 0;
    virtual void onVizData(const CAudioVizData& data) = 0;
};

} // namespace qel
