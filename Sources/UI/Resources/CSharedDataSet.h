// A graphics file that is loaded when it is first needed.
#pragma once

#include "CCriticalSection.h"
#include "CDataSet.h"
#include "Streams/CResourceReader.h"

#include <memory>
#include <type_traits>

namespace qel {

// Holds the contents of one file for the interface scale that was asked for last, for all instances in the
// process. Opening a plug-in's editor costs the load once; an instance that never opens one costs nothing.
// Whoever gets a set shares it: when an editor opens at another scale, the file is loaded anew, and what was
// loaded before lives on until the last editor that draws with it has closed.
template <class Set>
class CSharedDataSet
{
public:
    // The contents of `file`; the scale does not matter to a set that has no variants. On error `out` is
    // null. Loading may block.
    CError get(const CString& file, double interfaceScale, std::shared_ptr<const Set>& out)
    {
        const CLock lock(section_);
        if (!set_ || (kHasVariants && interfaceScale != interfaceScale_)) {
            out = nullptr;
            std::shared_ptr<Set> loaded;
            QEL_TRY(load(file, interfaceScale, loaded), file);
            set_ = std::move(loaded);
            interfaceScale_ = interfaceScale;
        }
        out = set_;
        return {};
    }

private:
    static constexpr bool kHasVariants = std::is_constructible_v<Set, double>;

    static CError load(const CString& file, double interfaceScale, std::shared_ptr<Set>& out)
    {
        CResourceReader reader;
        QEL_TRY(reader.open(file), {});
        if constexpr (kHasVariants) {
            out = std::make_shared<Set>(interfaceScale);
        } else {
            out = std::make_shared<Set>();
        }
        return out->load(reader);
    }

    CCriticalSection section_; // two hosts' windows may live on two threads
    std::shared_ptr<const Set> set_;
    double interfaceScale_ = 0.0;
};

} // namespace qel
