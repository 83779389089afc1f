// Prints a live graph and the kernel calls of a block.
#pragma once

#include "CGraphVisitor.h"
#include "GraphHost/CKernelRecording.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace qel::tools {

// Takes the state of a graph down while it stands still, then prints it: processes in schedule order with
// their channels, rate and latency, and links with their active counts.
class CGraphPrinter final : public CGraphVisitor
{
public:
    void enterCompound(const CAudioProcessBase& compound) override;
    void leaveCompound(const CAudioProcessBase& compound) override;
    void terminal(const CAudioProcessBase& process) override;
    void link(const CGraphLink& link) override;

    // As indented text.
    void printText(std::ostream& out) const;
    // As input for Graphviz; links that are not active are dotted.
    void printDot(std::ostream& out) const;

private:
    struct Process
    {
        const CAudioProcessBase* process;
        int depth;
        bool isCompound;
    };
    struct Link
    {
        std::string source;
        std::string destination;
        int sourcePort;
        int destinationPort;
        int activeCount;
        int depth;
    };

    std::vector<Process> processes_;
    std::vector<Link> links_;
    int depth_ = 0;
};

// One line for each call: kernel, count, scalar, operands as slot and sample offset.
void printCalls(const CKernelRecording& recording, std::ostream& out);

} // namespace qel::tools
