// The error value: how every fallible operation reports.
#include "CError.h"

#include "Trace.h"

namespace qel {

const std::vector<CString>& CError::lines() const
{
    static const std::vector<CString> none;
    return record_ ? record_->lines : none;
}

std::string CError::text() const
{
    std::string joined;
    for (const CString& line : lines()) {
        joined += joined.empty() ? "" : "\n";
        joined += line.toUtf8();
    }
    return joined;
}

CError addErrorLine(CError inner, CString line)
{
    if (!inner.record_) {
        inner.record_ = std::make_unique<CError::Record>();
    }
    inner.record_->lines.push_back(std::move(line));
    return inner;
}

CString formatMessage(const CString& message, const std::vector<CString>& parameters)
{
    CString text;
    for (std::size_t i = 0; i < message.length(); ++i) {
        if (message[i] != u'%') {
            text += message[i];
            continue;
        }
        if (++i == message.length()) {
            break;
        }
        const char16_t letter = message[i];
        if (letter == u'%') {
            text += letter;
        } else if (letter >= u'1' && letter <= u'9' && letter - u'1' < static_cast<int>(parameters.size())) {
            text += parameters[static_cast<std::size_t>(letter - u'1')];
        }
    }
    return text;
}

namespace {

// The message's identifier, "@qelstr_Class_method_Case ", is for reference only.
CString withoutIdentifier(const CString& message)
{
    if (!message.startsWith("@")) {
        return message;
    }
    const std::size_t blank = message.find(u' ');
    return blank == CString::kNone ? CString() : message.substring(blank + 1);
}

} // namespace

CError reportError(CError inner, const char* sourceFile, int line, const CString& context,
                   const CString& message, const std::vector<CString>& parameters)
{
    CString text = CString(sourceFile) + "( " + CString::number(line) + " )";
    if (!context.isEmpty()) {
        text += " // ";
        text += context;
    }
    // The identifier goes first, so that a parameter that begins with @ is never taken for one.
    const CString visible = formatMessage(withoutIdentifier(message), parameters);
    if (!visible.isEmpty()) {
        text += ": ";
        text += visible;
    }
    return addErrorLine(std::move(inner), std::move(text));
}

void collectError(CError& first, CError error)
{
    if (!first) {
        first = std::move(error);
    } else if (error) {
        traceError(error);
    }
}

void traceError(const CError& error)
{
    for (const CString& line : error.lines()) {
        trace(line);
    }
}

} // namespace qel
