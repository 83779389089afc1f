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
