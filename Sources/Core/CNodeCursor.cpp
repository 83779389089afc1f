// Reads the encoded nodes of a compiled tree.
#include "CNodeCursor.h"

namespace qel {

CError CNodeCursor::failTruncated() const
{
    QEL_FAIL({}, "@qelstr_CNodeCursor_failTruncated Compiled tree data ends early (position %1, size %2).",
             position_, data_.size());
}

CError CNodeCursor::readBytes(std::string_view& out)
{
    std::uint32_t count = 0;
    QEL_TRY(readU32(count), {});
    if (data_.size() - position_ < count) {
        return failTruncated();
    }
    out = {reinterpret_cast<const char*>(data_.data()) + position_, count};
    position_ += count;
    return {};
}

CError CNodeCursor::skipString()
{
    std::string_view ignored;
    return readBytes(ignored);
}

CError CNodeCursor::enterNode()
{
    if (depth_ == kMaxDepth) {
        QEL_FAIL({}, "@qelstr_CNodeCursor_enterNode Compiled tree is nested deeper than %1 nodes.",
                 kMaxDepth);
    }
    ++depth_;
    return {};
}

} // namespace qel
