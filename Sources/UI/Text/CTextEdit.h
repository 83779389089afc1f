// A line of text that is being edited.
#pragma once

#include "CString.h"

#include <vector>

namespace qel {

// The text with its caret and selection, and what keys do to them; knows nothing of fonts and windows.
// Positions are between characters, from 0 to the length. The selection lies between the caret and the
// anchor, where it began; moving the caret without `isExtending` drops it.
class CTextEdit
{
public:
    // `acceptChars`: the characters that may be put in, empty for all. `maxLength`: of the whole text, 0 for
    // no limit. Neither touches the text that is there.
    void setRules(const CString& acceptChars, std::size_t maxLength);
    // The caret goes to the end.
    void setText(const CString& text);

    const CString& getText() const { return text_; }
    std::size_t getCaret() const { return caret_; }
    bool hasSelection() const { return caret_ != anchor_; }
    std::size_t getSelectionBegin() const { return caret_ < anchor_ ? caret_ : anchor_; }
    std::size_t getSelectionEnd() const { return caret_ < anchor_ ? anchor_ : caret_; }
    CString getSelectedText() const;

    // --- the caret

    void moveTo(std::size_t position, bool isExtending);
    // To the next position; a selection that is not extended ends at its side.
    void moveLeft(bool isExtending);
    void moveRight(bool isExtending);
    // To the begin of this word or the one before, and to the begin of the next one.
    void moveWordLeft(bool isExtending);
    void moveWordRight(bool isExtending);
    void selectAll();
    // The word or the blanks around a position.
    void selectWordAt(std::size_t position);

    // --- the text

    // What other programs have copied. Characters that a CString has no room for are left out.
    static CString fromClipboard(const std::string& utf8);
    // Puts text in place of the selection, as much of it as the rules allow. Line feeds and other control
    // characters within it become one blank.
    void insert(const CString& text);
    // Takes the selection out or, without one, a character or a word beside the caret.
    void eraseLeft(bool isWord);
    void eraseRight(bool isWord);
    // Back and forth between what there was before each change. Characters typed one behind the other are one
    // change. Without effect at the ends.
    void undo();
    void redo();

private:
    struct State
    {
        CString text;
        std::size_t caret = 0;
        std::size_t anchor = 0;
    };

    bool isAccepted(char16_t character) const;
    std::size_t wordBegin(std::size_t position) const;
    std::size_t nextWord(std::size_t position) const;
    void replaceSelection(const CString& text);
    void swapState(std::vector<State>& from, std::vector<State>& to);

    CString text_;
    CString acceptChars_;
    std::size_t maxLength_ = 0;
    std::size_t caret_ = 0;
    std::size_t anchor_ = 0;
    std::vector<State> undo_;
    std::vector<State> redo_;
    // Where the last character was typed behind; another one there goes with it.
    std::size_t typedEnd_ = CString::kNone;
};

} // namespace qel
