// What stands for a parameter in the tree of the interface.
#pragma once

#include "CAudioParamConverter.h"
#include "CObject.h"
#include "CStateSwitchSource.h"

#include <span>
#include <vector>

namespace qel {

class CAudioParamInfo;
class CParamEdit;

// Told by a bridge that it has joined.
class CParamBridgeListener
{
public:
    virtual ~CParamBridgeListener() = default;

    // Some value may be another one.
    virtual CError onBridgeValues() = 0;
    // The declaration is there, or is another one. The values follow.
    virtual CError onBridgeInfo() = 0;
    // The bridge ends and is not to be asked any more.
    virtual void onBridgeGone() = 0;
};

// Elements are counted through the list of a group: of a parameter whose entries are pairs, the second entry
// has the elements 2 and 3. Groups and elements that were never written have defaults. Values are real ones,
// as modules receive them; those of a string parameter are texts alone. Until the declaration is there a
// bridge has no elements and takes no value. Window's thread.
//
// Values change when the audio side has taken them, never by being written here.
class CParamBridge : public CObject, public CStateSwitchSource
{
public:
    // One write to successive elements of a group.
    struct CWrite
    {
        std::int32_t group = 0;
        std::int32_t element = 0;
        std::span<const double> values;
        std::span<const CString> texts; // for a string parameter, in place of the values
        bool isEnd = false;             // the group's list ends behind them
        bool isUndoDisabled = false;
    };

    static void buildClassInfo(CClassInfo& info);

    void release() override;
    CError onAttrChanged(CObject& sender, const CString& key, const CAttrValue& value) override;

    // Null until the audio side has declared the parameter.
    virtual const CAudioParamInfo* getInfo() const = 0;
    virtual std::int32_t getElementCount(std::int32_t group) const = 0;
    virtual double getValue(std::int32_t group, std::int32_t element) const = 0;
    virtual double getDefault(std::int32_t group, std::int32_t element) const = 0;
    // Without the unit.
    virtual CString getText(std::int32_t group, std::int32_t element,
                            CAudioParamConverter::TextMode mode) const = 0;
    // The text that another value of the element has.
    virtual CString getTextOf(std::int32_t element, double value,
                              CAudioParamConverter::TextMode mode) const = 0;

    // The user takes hold of an element and lets it go again; calls nest. Meanwhile it shows what is written
    // from here, whatever else the host does to it.
    virtual CError beginEdit(std::int32_t group, std::int32_t element) = 0;
    virtual CError endEdit(std::int32_t group, std::int32_t element) = 0;
    // Values are limited to the range. Goes to `edit` if there is one, otherwise at once.
    virtual CError write(const CWrite& write, CParamEdit* edit) = 0;
    // Back to the defaults, as a step of its own.
    virtual CError resetToDefault(std::int32_t group, std::int32_t element, bool isUndoDisabled) = 0;

    // --- converted; NaN, empty or false without a declaration
    double toNorm(std::int32_t element, double value) const;
    double toValue(std::int32_t element, double norm) const;
    // The value of a typed text, with or without its unit; false if it is none, and for string parameters.
    bool parseText(std::int32_t element, const CString& text, double& out) const;
    CString getUnit(std::int32_t element) const;

    // --- listeners, which are told of later changes only
    void addListener(CParamBridgeListener& listener) { listeners_.push_back(&listener); }
    void removeListener(CParamBridgeListener& listener) { std::erase(listeners_, &listener); }

    CError addSwitch(CViewStateSwitch& stateSwitch) override;
    void removeSwitch(CViewStateSwitch& stateSwitch) override;

protected:
    // Both go on to the end, and return the first error.
    CError tellInfo();
    CError tellValues();

private:
    template <class Call>
    CError forListeners(Call&& call);
    CError updateSwitch(CViewStateSwitch& stateSwitch);
    CError updateSwitches();
    const CAudioParamConverter* converterOf(std::int32_t element, std::int32_t& outIndex) const;

    std::vector<CParamBridgeListener*> listeners_;
    std::vector<CViewStateSwitch*> switches_;
};

} // namespace qel
