// Changes of several parameters that the user makes in one go.
#pragma once

#include "InterfaceRecords.h"

namespace qel {

class CAudioInterfaceClient;

// Gathers what controls write, and sends it as one step of the history. Successive ones over the same
// elements become one step if all are made in gestures: a drag that moves several knobs sends one a movement.
//
//     CParamEdit edit;
//     first.setNorm(0, 0.25, &edit);
//     second.setNorm(0, 0.75, &edit);
//     edit.send();
//
// What is not sent is dropped. All parameters are those of one client.
class CParamEdit
{
public:
    // Empty edits do nothing.
    CError send();
    bool isEmpty() const { return record_.writes.empty(); }

    // --- for bridges

    // The first write names the step. An empty name among them does not hide the step of the others.
    void add(CAudioInterfaceClient& client, const CString& stepName, std::int32_t source, bool isMergeable,
             record::CParamWrite write);

private:
    CAudioInterfaceClient* client_ = nullptr;
    record::CChangeParams record_;
};

} // namespace qel
