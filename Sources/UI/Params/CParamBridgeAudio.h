// A parameter of the audio side in the tree of the interface.
#pragma once

#include "CAudioInterfaceClient.h"
#include "CParamBridge.h"

namespace qel {

// Tag `ui:param-bridge`.
//
//     interface-client   path of the client of the audio/UI interface
//     param              full name of the parameter, such as plugin.modMain.modDrumfell.lf-gain
//
// Reads the client's copy of the parameter. While an element is held, it shows the last value that was
// written here and has come back: so automation that plays at the same time does not fight the hand, and what
// the host has done by then is seen as soon as the hand lets go.
class CParamBridgeAudio : public CParamBridge, public CAudioInterfaceParamListener
{
public:
    static void buildClassInfo(CClassInfo& info);

    CError init() override;
    void release() override;

    const CString& getParam() const { return param_; }
    CAudioInterfaceClient& getClient() const { return *client_; }

    const CAudioParamInfo* getInfo() const override;
    std::int32_t getElementCount(std::int32_t group) const override;
    double getValue(std::int32_t group, std::int32_t element) const override;
    double getDefault(std::int32_t group, std::int32_t element) const override;
    CString getText(std::int32_t group, std::int32_t element,
                    CAudioParamConverter::TextMode mode) const override;
    CString getTextOf(std::int32_t element, double value, CAudioParamConverter::TextMode mode) const override;
    CError beginEdit(std::int32_t group, std::int32_t element) override;
    CError endEdit(std::int32_t group, std::int32_t element) override;
    CError write(const CWrite& write, CParamEdit* edit) override;
    CError resetToDefault(std::int32_t group, std::int32_t element, bool isUndoDisabled) override;

    void onParamUpdate(const CString& param) override;

private:
    // An element that the user holds.
    struct CHeld
    {
        std::int32_t group;
        std::int32_t element;
        std::int32_t holders;
        double shown;
        double sent; // NaN: nothing yet
    };

    // The group that counts: a parameter may have but one.
    std::int32_t groupOf(std::int32_t group) const;
    CHeld* findHeld(std::int32_t group, std::int32_t element);
    bool isWholeWriteHeld(const CWrite& write, std::int32_t group);
    // What came back, past what is held.
    double readValue(std::int32_t group, std::int32_t element) const;
    CString stepName(const char* action, std::int32_t group) const;
    CError tellHost(std::int32_t group, std::int32_t element, bool begins);
    record::CParamWrite recordOf(const CWrite& write, std::int32_t group);

    CAudioInterfaceClient* client_ = nullptr;
    const CAudioInterfaceParam* source_ = nullptr; // the client's copy
    bool wasKnown_ = false;
    CAudioParamStorage defaults_;
    std::vector<CHeld> held_;

    // Bound attributes.
    CString clientPath_;
    CString param_;
};

} // namespace qel
