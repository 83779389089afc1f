// The error value: how every fallible operation reports.
#pragma once

#include "CString.h"

#include <concepts>
#include <memory>
#include <utility>
#include <vector>

namespace qel {

// A pointer-sized handle to an error record; empty means success. It is created at the first failure, travels
// up by return value and gains a line at each level, so that a failure prints bottom-up, the deepest line
// first. Whoever ends the chain lets the handle go (or says so with releaseError()), which frees the record.
//
// Allocates only on failure. The audio thread never builds one.
class [[nodiscard]] CError
{
public:
    CError() noexcept = default;

    // True if something failed.
    explicit operator bool() const { return record_ != nullptr; }
    // The lines in the order added; none on success.
    const std::vector<CString>& lines() const;
    // All lines joined by line feeds, as UTF-8.
    std::string text() const;

private:
    friend CError addErrorLine(CError inner, CString line);

    struct Record
    {
        std::vector<CString> lines;
    };
    std::unique_ptr<Record> record_;
};

// Adds one line "file( line ) // context: message" to `inner`, which becomes a new record if it is a success.
// In `message`, %1 to %9 stand for the parameters and %% for a single %; a number without a parameter, or
// another letter, drops out. A leading @identifier is taken off: the user sees only the text behind it.
CError reportError(CError inner, const char* sourceFile, int line, const CString& context = {},
                   const CString& message = {}, const std::vector<CString>& parameters = {});

// Writes each line through the trace (Trace.h).
void traceError(const CError& error);
// The outcome of several actions of which none stops the others: keeps the first error and traces those after
// it.
void collectError(CError& first, CError error);
// Ends the chain here, on purpose.
inline void releaseError(CError error)
{
    (void)error;
}

// The text with its parameters put in, as reportError() does it; an identifier is left alone.
CString formatMessage(const CString& message, const std::vector<CString>& parameters);

inline CString errorParameter(CString text)
{
    return text;
}
inline CString errorParameter(std::integral auto value)
{
    return CString::number(static_cast<std::int64_t>(value));
}

template <class... Parameters>
CError makeError(const char* sourceFile, int line, const CString& context, const CString& message,
                 Parameters&&... parameters)
{
    return reportError({}, sourceFile, line, context, message,
                       {errorParameter(std::forward<Parameters>(parameters))...});
}

} // namespace qel

// Returns from the calling function with a new error: QEL_FAIL(getFullName(), "@qelstr_... Text %1.", value).
#define QEL_FAIL(context, ...) return ::qel::makeError(__FILE__, __LINE__, context, __VA_ARGS__)

// Runs a fallible expression; on failure adds this place and returns.
#define QEL_TRY(expression, context)                                                                         \
    do {                                                                                                     \
        if (::qel::CError qelError = (expression)) {                                                         \
            return ::qel::reportError(std::move(qelError), __FILE__, __LINE__, context);                     \
        }                                                                                                    \
    } while (false)
