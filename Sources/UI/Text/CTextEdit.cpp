// A line of text that is being edited.
#include "CTextEdit.h"

#include <algorithm>

namespace qel {

namespace {

bool isControl(char16_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

// Words are separated by blanks.
bool isBlank(char16_t character)
{
    return character == u' ' || character == 0xA0;
}

} // namespace

void CTextEdit::setRules(const CString& acceptChars, std::size_t maxLength)
{
    acceptChars_ = acceptChars;
    maxLength_ = maxLength;
}

void CTextEdit::setText(const CString& text)
{
    text_ = text;
    caret_ = anchor_ = text_.length();
    undo_.clear();
    redo_.clear();
    typedEnd_ = CString::kNone;
}

CString CTextEdit::getSelectedText() const
{
    return text_.substring(getSelectionBegin(), getSelectionEnd() - getSelectionBegin());
}

// --- the caret

void CTextEdit::moveTo(std::size_t position, bool isExtending)
{
    caret_ = std::min(position, text_.length());
    anchor_ = isExtending ? anchor_ : caret_;
}

void CTextEdit::moveLeft(bool isExtending)
{
    if (hasSelection() && !isExtending) {
        moveTo(getSelectionBegin(), false);
    } else {
        moveTo(caret_ > 0 ? caret_ - 1 : 0, isExtending);
    }
}

void CTextEdit::moveRight(bool isExtending)
{
    moveTo(hasSelection() && !isExtending ? getSelectionEnd() : caret_ + 1, isExtending);
}

std::size_t CTextEdit::wordBegin(std::size_t position) const
{
    while (position > 0 && isBlank(text_[position - 1])) {
        --position;
    }
    while (position > 0 && !isBlank(text_[position - 1])) {
        --position;
    }
    return position;
}

std::size_t CTextEdit::nextWord(std::size_t position) const
{
    while (position < text_.length() && !isBlank(text_[position])) {
        ++position;
    }
    while (position < text_.length() && isBlank(text_[position])) {
        ++position;
    }
    return position;
}

void CTextEdit::moveWordLeft(bool isExtending)
{
    moveTo(wordBegin(caret_), isExtending);
}

void CTextEdit::moveWordRight(bool isExtending)
{
    moveTo(nextWord(caret_), isExtending);
}

void CTextEdit::selectAll()
{
    anchor_ = 0;
    caret_ = text_.length();
}

void CTextEdit::selectWordAt(std::size_t position)
{
    if (text_.isEmpty()) {
        return;
    }
    position = std::min(position, text_.length() - 1);
    const bool isBetween = isBlank(text_[position]);
    const auto belongs = [&](std::size_t i) { return isBlank(text_[i]) == isBetween; };
    anchor_ = position;
    caret_ = position;
    while (anchor_ > 0 && belongs(anchor_ - 1)) {
        --anchor_;
    }
    while (caret_ < text_.length() && belongs(caret_)) {
        ++caret_;
    }
}

// --- the text

bool CTextEdit::isAccepted(char16_t character) const
{
    return acceptChars_.isEmpty() || acceptChars_.find(character) != CString::kNone;
}

void CTextEdit::replaceSelection(const CString& text)
{
    if (text.isEmpty() && !hasSelection()) {
        return;
    }
    const bool isTyped = text.length() == 1 && !hasSelection();
    if (!isTyped || caret_ != typedEnd_) {
        undo_.push_back({text_, caret_, anchor_});
    }
    redo_.clear();
    const std::size_t begin = getSelectionBegin();
    text_ = text_.substring(0, begin) + text + text_.substring(getSelectionEnd());
    caret_ = anchor_ = begin + text.length();
    typedEnd_ = text.length() == 1 ? caret_ : CString::kNone;
}

CString CTextEdit::fromClipboard(const std::string& utf8)
{
    std::string kept;
    for (std::size_t i = 0; i < utf8.size();) {
        // Four bytes are a character beyond 0xFFFF.
        const bool isLong = static_cast<unsigned char>(utf8[i]) >= 0xF0;
        kept += isLong ? "" : utf8.substr(i, 1);
        i += isLong ? 4 : 1;
    }
    return CString::fromUtf8(kept);
}

void CTextEdit::insert(const CString& text)
{
    const std::size_t kept = text_.length() - (getSelectionEnd() - getSelectionBegin());
    const std::size_t room = maxLength_ == 0 ? CString::kNone : maxLength_ - std::min(maxLength_, kept);
    CString allowed;
    bool isBlankDue = false;
    const auto add = [&](char16_t character) {
        if (isAccepted(character) && allowed.length() < room) {
            allowed.append(character);
        }
    };
    for (std::size_t i = 0; i < text.length(); ++i) {
        if (isControl(text[i])) {
            isBlankDue = i > 0;
            continue;
        }
        if (isBlankDue) {
            add(u' ');
            isBlankDue = false;
        }
        add(text[i]);
    }
    if (!allowed.isEmpty()) {
        replaceSelection(allowed);
    }
}

void CTextEdit::eraseLeft(bool isWord)
{
    if (!hasSelection()) {
        isWord ? moveWordLeft(true) : moveLeft(true);
    }
    replaceSelection({});
}

void CTextEdit::eraseRight(bool isWord)
{
    if (!hasSelection()) {
        isWord ? moveWordRight(true) : moveRight(true);
    }
    replaceSelection({});
}

void CTextEdit::swapState(std::vector<State>& from, std::vector<State>& to)
{
    if (from.empty()) {
        return;
    }
    to.push_back({text_, caret_, anchor_});
    text_ = from.back().text;
    caret_ = from.back().caret;
    anchor_ = from.back().anchor;
    from.pop_back();
    typedEnd_ = CString::kNone;
}

void CTextEdit::undo()
{
    swapState(undo_, redo_);
}

void CTextEdit::redo()
{
    swapState(redo_, undo_);
}

} // namespace qel
