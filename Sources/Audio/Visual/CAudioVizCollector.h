// Gathers what meters measure, for whoever looks.
#pragma once

#include "CAudioParamInfo.h"
#include "CAudioVizData.h"
#include "CCriticalSection.h"
#include "CObject.h"

#include <array>
#include <atomic>
#include <vector>

namespace qel {

class CAudioEnv;
class CAudioParam;
class CAudioParamCollector;

// Tag audio:viz-collector; one per instance, owned by its tree. Attributes: env, param-collector.
//
// A source registers by name and gets an identifier and a parameter, the name plus "-enable", which is 1
// while somebody listens: the graph cuts off what is not looked at. Findings go into one of two buffers,
// which the audio thread alone fills. At the start of a processing call it finishes the buffer: hands it over
// or, where the reader has not fetched the one before, takes that back and adds to it. So a reader gets all
// up to the latest call; one that stalls loses the oldest findings and holds up nobody. The first listener
// brings the buffers, and finds nothing of what was measured before it came.
class CAudioVizCollector : public CObject
{
public:
    // Findings in one buffer: about two seconds of two meters on eight channels.
    static constexpr std::size_t kBufferSize = 1024;

    static void buildClassInfo(CClassInfo& info);

    CError init() override;

    CAudioEnv& getEnv() const { return *env_; }

    // --- control threads

    // The identifier of a source; one of the same name is the same source.
    std::int32_t registerSource(const CString& fullName);
    // -1 if there is none of this name.
    std::int32_t findSource(const CString& fullName);
    // Each listener counts. An unknown identifier is ignored, as is a listener too few.
    void addListener(std::int32_t id);
    void removeListener(std::int32_t id);
    // Moves what the audio thread has finished to the end of `out`, the oldest first.
    void take(std::vector<CAudioVizDataMeter>& out);
    // While the audio thread stands still: drops all findings.
    void reset();

    // --- audio thread: no locks, no allocation

    // At the start of each processing call.
    void beginBlock();
    // Adds a finding.
    void push(const CAudioVizDataMeter& data);

private:
    struct Source
    {
        CString name;
        CAudioParam* enable;
        std::int32_t listeners;
    };
    struct Buffer
    {
        std::array<CAudioVizDataMeter, kBufferSize> data;
        std::size_t count = 0;
    };

    using Buffers = std::array<Buffer, 2>;

    void changeListeners(std::int32_t id, std::int32_t by);
    static void append(Buffer& older, const Buffer& newer);

    CString envPath_;
    CString paramsPath_;
    CAudioEnv* env_ = nullptr;
    CAudioParamCollector* params_ = nullptr;
    std::shared_ptr<const CAudioParamInfo> enableInfo_;
    CString enablePath_;

    CCriticalSection lock_; // guards the sources; before the lock of a parameter
    std::vector<Source> sources_;
    std::unique_ptr<Buffers> buffers_;

    std::atomic<Buffers*> arriving_{nullptr};
    Buffer* current_ = nullptr; // the audio thread's; null until somebody listens
    std::atomic<Buffer*> free_{nullptr};
    std::atomic<Buffer*> finished_{nullptr};
    std::atomic<bool> isStale_{false}; // what there is was measured before anybody listened
};

} // namespace qel
