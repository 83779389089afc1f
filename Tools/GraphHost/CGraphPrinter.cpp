// Prints a live graph and the kernel calls of a block.
#include "GraphHost/CGraphPrinter.h"

#include "CAudioProcessBase.h"
#include "Definitions/CAudioProcessDefBase.h"

#include <ostream>

namespace qel::tools {

namespace {

// Copies in a stack have one name; the group tells them apart.
std::string nameOf(const CAudioProcessBase& process)
{
    std::string name = process.fullName().toUtf8();
    if (process.group() != CAudioProcessBase::kGroupOfChannel) {
        name += "[group " + std::to_string(process.group()) + "]";
    }
    return name;
}

std::string endOf(const CAudioProcessBase& compound, const CAudioProcessBase* process, const char* self)
{
    return process ? nameOf(*process) : nameOf(compound) + " " + self;
}

std::string indent(int depth)
{
    return std::string(2 * static_cast<std::size_t>(depth), ' ');
}

void printFormat(const CAudioProcessBase& process, std::ostream& out)
{
    out << process.sampleRateHz() << " Hz, latency " << process.format().latencySamples << ", channels";
    for (const auto& channel : process.channels()) {
        out << ' ' << channel.number;
        if (channel.format) {
            out << "(group " << channel.format->group << ')';
        }
    }
}

} // namespace

void CGraphPrinter::enterCompound(const CAudioProcessBase& compound)
{
    processes_.push_back({&compound, depth_++, true});
}

void CGraphPrinter::leaveCompound(const CAudioProcessBase&)
{
    --depth_;
}

void CGraphPrinter::terminal(const CAudioProcessBase& process)
{
    processes_.push_back({&process, depth_, false});
}

void CGraphPrinter::link(const CGraphLink& link)
{
    links_.push_back({endOf(link.compound, link.source, "input"),
                      endOf(link.compound, link.destination, "output"), link.sourcePort, link.destinationPort,
                      link.activeCount, depth_});
}

void CGraphPrinter::printText(std::ostream& out) const
{
    out << "Processes in schedule order\n";
    for (const Process& entry : processes_) {
        out << indent(entry.depth + 1) << nameOf(*entry.process) << " <"
            << entry.process->def().getTag().toUtf8() << ">  ";
        printFormat(*entry.process, out);
        out << '\n';
    }
    out << "Links (source/port -> destination/port, active count)\n";
    for (const Link& link : links_) {
        out << "  " << link.source << '/' << link.sourcePort << " -> " << link.destination << '/'
            << link.destinationPort << "  " << link.activeCount << '\n';
    }
}

void CGraphPrinter::printDot(std::ostream& out) const
{
    out << "digraph graph_of_processes {\n  rankdir=LR;\n  node [shape=box, fontname=\"sans-serif\"];\n";
    int place = 0; // in the schedule
    for (const Process& entry : processes_) {
        if (!entry.isCompound) {
            out << "  \"" << nameOf(*entry.process) << "\" [label=\"" << ++place << ": "
                << nameOf(*entry.process) << "\\n"
                << entry.process->def().getTag().toUtf8() << "\\n";
            printFormat(*entry.process, out);
            out << "\"];\n";
        }
    }
    for (const Link& link : links_) {
        out << "  \"" << link.source << "\" -> \"" << link.destination << "\" [label=\"" << link.sourcePort
            << "-" << link.destinationPort << ": " << link.activeCount << '"'
            << (link.activeCount > 0 ? "" : ", style=dotted") << "];\n";
    }
    out << "}\n";
}

void printCalls(const CKernelRecording& recording, std::ostream& out)
{
    out << "Kernel calls (kernel, count, scalar, operands as slot+offset)\n";
    for (const CKernelCall& call : recording.calls()) {
        out << "  " << call.entry->name << "  " << call.count << "  " << call.scalar << ' ';
        for (int i = 0; i < call.entry->operandCount; ++i) {
            const CBufferRef operand = call.operand(static_cast<std::size_t>(i));
            out << ' ' << operand.slot();
            if (operand.byteOffset() != 0) {
                out << '+' << operand.byteOffset() / static_cast<int>(sizeof(double));
            }
            out << ((call.entry->writeMask >> i & 1) ? "*" : "");
        }
        out << '\n';
    }
}

} // namespace qel::tools
