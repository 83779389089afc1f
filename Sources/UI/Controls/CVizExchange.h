// Brings what meters measure to those who show it.
#pragma once

#include "CAudioInterfaceClient.h"
#include "CObject.h"

#include <vector>

namespace qel {

// What wants to be told. Leaves the exchange before it ends.
class CVizListener
{
public:
    virtual void onVizData(const CAudioVizData& data) = 0;
    // After each round, also one that brought nothing.
    virtual void onVizTick() = 0;
    // What came so far is void.
    virtual void onVizClear() = 0;
    // The exchange is going away.
    virtual void onVizGone() = 0;

protected:
    ~CVizListener() = default;
};

// Tag `ui:viz-exchange`. While there are listeners it asks the audio side for new data, at "viz-fps" rounds
// a second (30 by default); the audio side measures what somebody listens to. Without listeners it does
// nothing. Its timer is the child "timer"; in a tree without an event loop others send "on-timer".
//
//     interface-client    path of the UI side's end of the audio/UI interface
//
// Takes the events "on-timer" and "clear", also under the name "on-clear".
class CVizExchange : public CObject, public CAudioInterfaceVizProcessor
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    // From now on the listener gets the data of the source of this name. A listener has one source.
    CError addListener(const CString& source, CVizListener& listener);
    void removeListener(CVizListener& listener);

    // --- for the client
    void onVizSource(const CString& source, std::int32_t id) override;
    void onVizData(const CAudioVizData& data) override;

private:
    static constexpr std::int32_t kUnknown = -1;

    struct Entry
    {
        CString source;
        std::int32_t id;
        CVizListener* listener; // null: has left
    };

    CError attrVizFps();
    CError onTimer(const CAttrMap& parameters);
    CError onClear(const CAttrMap& parameters);
    CError startTimer();
    bool isListenedTo(const CString& source) const;
    // Listeners may come and go meanwhile; those that come wait for the next call.
    template <class Call>
    void forListeners(Call&& call);

    CAudioInterfaceClient* client_ = nullptr;
    std::vector<Entry> entries_;
    int calls_ = 0; // of forListeners() that are running
    CObject* timer_ = nullptr;

    // Bound attributes.
    CString clientPath_;
    double fps_ = 30.0;
};

} // namespace qel
