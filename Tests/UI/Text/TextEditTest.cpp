// The line that is edited, apart from what shows it.
#include "CTextEdit.h"

#include <gtest/gtest.h>

namespace qel::test {

namespace {

// The text with "|" at the caret and "[" at the other end of the selection.
std::string shown(const CTextEdit& edit)
{
    const std::size_t begin = edit.getSelectionBegin();
    const std::size_t end = edit.getSelectionEnd();
    const auto part = [&](std::size_t from, std::size_t to) {
        return edit.getText().substring(from, to - from).toUtf8();
    };
    const bool isCaretFirst = edit.getCaret() == begin && edit.hasSelection();
    return part(0, begin) +
           (!edit.hasSelection() ? ""
            : isCaretFirst       ? "|"
                                 : "[") +
           part(begin, end) + (isCaretFirst ? "[" : "|") + part(end, edit.getText().length());
}

CTextEdit editOf(const char* text, std::size_t caret)
{
    CTextEdit edit;
    edit.setText(text);
    edit.moveTo(caret, false);
    return edit;
}

} // namespace

TEST(TextEditTest, MovesAndSelects)
{
    CTextEdit edit = editOf("one  two", 3);
    edit.moveRight(true);
    edit.moveRight(true);
    EXPECT_EQ(shown(edit), "one[  |two");
    edit.moveLeft(false);
    EXPECT_EQ(shown(edit), "one|  two");
    edit.moveWordRight(false);
    EXPECT_EQ(shown(edit), "one  |two");
    edit.moveWordLeft(true);
    EXPECT_EQ(shown(edit), "|one  [two");
    EXPECT_EQ(edit.getSelectedText(), "one  ");
    edit.moveRight(false);
    EXPECT_EQ(shown(edit), "one  |two");
    edit.moveTo(99, false);
    edit.moveRight(false);
    EXPECT_EQ(shown(edit), "one  two|");
    edit.selectAll();
    EXPECT_EQ(shown(edit), "[one  two|");
    edit.moveTo(0, false);
    edit.moveLeft(true);
    EXPECT_EQ(shown(edit), "|one  two");

    const auto wordAt = [&](std::size_t position) {
        edit.selectWordAt(position);
        return shown(edit);
    };
    EXPECT_EQ(wordAt(1), "[one|  two");
    EXPECT_EQ(wordAt(3), "one[  |two");
    EXPECT_EQ(wordAt(99), "one  [two|");
}

TEST(TextEditTest, PutsInWhatTheRulesAllow)
{
    CTextEdit edit = editOf("ab", 1);
    edit.insert(CString::fromUtf8("\xC3\xA9\xCE\xA9"));
    EXPECT_EQ(shown(edit), "a\xC3\xA9\xCE\xA9|b");
    edit.selectAll();
    edit.insert("line\r\n two\tthree\n");
    EXPECT_EQ(shown(edit), "line  two three|");

    edit = editOf("12", 2);
    edit.setRules("0123456789.", 4);
    edit.insert("x3.y45");
    EXPECT_EQ(shown(edit), "123.|");
    edit.insert("9");
    EXPECT_EQ(shown(edit), "123.|") << "it is full";
    edit.selectAll();
    edit.insert("abc");
    EXPECT_EQ(shown(edit), "[123.|") << "nothing that may be put in leaves the selection alone";
    edit.insert("98765");
    EXPECT_EQ(shown(edit), "9876|");

    // An older text may be longer than the rules allow.
    edit = editOf("123456", 6);
    edit.setRules("", 4);
    edit.insert("7");
    EXPECT_EQ(shown(edit), "123456|");
}

TEST(TextEditTest, Erases)
{
    CTextEdit edit = editOf("one two", 4);
    edit.eraseLeft(false);
    EXPECT_EQ(shown(edit), "one|two");
    edit.eraseRight(false);
    EXPECT_EQ(shown(edit), "one|wo");
    edit.eraseRight(true);
    EXPECT_EQ(shown(edit), "one|");
    edit.eraseRight(true);
    edit.eraseLeft(true);
    EXPECT_EQ(shown(edit), "|");
    edit.eraseLeft(false);
    EXPECT_EQ(shown(edit), "|");
    edit = editOf("abcd", 1);
    edit.moveTo(3, true);
    edit.eraseRight(true);
    EXPECT_EQ(shown(edit), "a|d");
}

TEST(TextEditTest, TakesChangesBack)
{
    CTextEdit edit = editOf("one", 3);
    for (const char* const typed : {" ", "t", "w", "o"}) {
        edit.insert(typed);
    }
    edit.eraseLeft(false);
    edit.undo();
    EXPECT_EQ(edit.getText(), "one two");
    edit.undo();
    EXPECT_EQ(shown(edit), "one|") << "what was typed in one go";
    edit.undo();
    EXPECT_EQ(shown(edit), "one|") << "nothing before";
    edit.redo();
    edit.redo();
    edit.redo();
    EXPECT_EQ(shown(edit), "one tw|");
    edit.undo();
    edit.insert("x");
    edit.redo();
    EXPECT_EQ(edit.getText(), "one twx") << "a change ends what could be done again";
}

TEST(TextEditTest, TakesFromTheClipboardWhatItHasRoomFor)
{
    EXPECT_EQ(CTextEdit::fromClipboard("a\xF0\x9F\x94\x8A\xC3\xA9").toUtf8(), "a\xC3\xA9");
    EXPECT_EQ(CTextEdit::fromClipboard("a\xF0\x9F").toUtf8(), "a");
}

} // namespace qel::test
