// Root of every class that is destroyed through a base pointer.
#pragma once

namespace qel {

// A virtual destructor and nothing else: it makes dynamic type checks possible between any two classes of the
// system. Copying is left to derived classes; most of them have identity and forbid it.
class CCheckedObject
{
public:
    virtual ~CCheckedObject() = default;

protected:
    CCheckedObject() = default;
    CCheckedObject(const CCheckedObject&) = default;
    CCheckedObject& operator=(const CCheckedObject&) = default;
};

} // namespace qel
