// Building nodes from the compiled form of a tree.
#include "CObject.h"

#include "CNodeCursor.h"
#include "Streams/CResourceReader.h"

namespace qel {

namespace {

constexpr std::uint32_t kTreeChunkId = 0x6C6D7863; // "cxml"

} // namespace

CError CObject::loadCompiled(const CString& fileName, bool fullInit)
{
    CByteBuffer tree;
    {
        CResourceReader reader;
        QEL_TRY(reader.open(fileName), fullName_);
        QEL_TRY(reader.readCompressedData(tree, kTreeChunkId), fullName_);
    }
    // The file's root node has neither tag nor name: what it holds lands on this object.
    CNodeCursor cursor(tree.bytes());
    QEL_TRY(loadNode(cursor, fullInit, true, false, false), fullName_);
    return {};
}

// A node is: tag, name, template flag, then either
//   plain:    attribute count, (key, value) pairs, child count, children; or
//   template: content tag, body size, body (one node, kept undecoded until it is instantiated).
CError CObject::loadNode(CNodeCursor& cursor, bool fullInit, bool skipHead, bool skipAttributes,
                         bool skipChildren)
{
    const CHold hold(*this); // handlers may release what comes up
    QEL_TRY(cursor.enterNode(), fullName_);
    if (skipHead) {
        QEL_TRY(cursor.skipString(), fullName_);
        QEL_TRY(cursor.skipString(), fullName_);
    }
    std::uint32_t templateFlag = 0;
    QEL_TRY(cursor.readU32(templateFlag), fullName_);
    isTemplate_ = templateFlag != 0;
    if (isTemplate_) {
        QEL_TRY(loadTemplateBody(cursor), fullName_);
        cursor.leaveNode();
        return {};
    }
    QEL_TRY(loadAttributes(cursor, skipAttributes), fullName_);
    if (fullInit) {
        QEL_TRY(init(), fullName_);
    }
    if (fullInit && !isReleased_) {
        QEL_TRY(applyAttrs(), fullName_);
    }
    if (!skipChildren) {
        QEL_TRY(loadChildren(cursor), fullName_);
    }
    if (fullInit && !isReleased_) {
        QEL_TRY(initChilds(), fullName_);
        initState_ = InitState::kReady;
    }
    cursor.leaveNode();
    return {};
}

CError CObject::loadTemplateBody(CNodeCursor& cursor)
{
    if (template_) {
        // An instance that became a holder would instantiate itself without end.
        QEL_FAIL(fullName_, "@qelstr_CObject_loadTemplateBody Body of template '%1' is a template itself.",
                 tag_);
    }
    std::string_view contentTag;
    std::string_view body;
    QEL_TRY(cursor.readBytes(contentTag), fullName_);
    QEL_TRY(cursor.readBytes(body), fullName_);
    contentTag_ = contentTag;
    templateBody_.assign({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()});
    QEL_TRY(applyAttrs(), fullName_);
    QEL_TRY(initChilds(), fullName_);
    initState_ = InitState::kReady;
    return {};
}

CError CObject::loadAttributes(CNodeCursor& cursor, bool skip)
{
    std::uint32_t count = 0;
    QEL_TRY(cursor.readU32(count), fullName_);
    for (auto left = static_cast<std::int32_t>(count); left > 0; --left) {
        std::string_view key;
        std::string_view value;
        QEL_TRY(cursor.readBytes(key), fullName_);
        QEL_TRY(cursor.readBytes(value), fullName_);
        if (!skip) {
            QEL_TRY(setAttribute(key, CString::fromUtf8(value), false), fullName_);
        }
    }
    return {};
}

CError CObject::loadChildren(CNodeCursor& cursor)
{
    std::uint32_t count = 0;
    QEL_TRY(cursor.readU32(count), fullName_);
    for (auto left = static_cast<std::int32_t>(count); left > 0 && !isReleased_; --left) {
        QEL_TRY(loadChild(cursor), fullName_);
    }
    return {};
}

CError CObject::loadChild(CNodeCursor& cursor)
{
    std::string_view tag;
    std::string_view name;
    QEL_TRY(cursor.readBytes(tag), fullName_);
    QEL_TRY(cursor.readBytes(name), fullName_);

    CObject* child = nullptr;
    if (CError error = createChildRaw(child, tag, name, false)) {
        releaseObject(child);
        return error;
    }
    const CHold hold(*child);
    if (CError error = child->loadNode(cursor, true, false, false, false)) {
        releaseObject(child);
        return error;
    }
    if (child->isTemplate_) {
        registerTemplate(*child);
    }
    return {};
}

CError CObject::replayTemplate(bool attributes)
{
    CNodeCursor body(template_->templateBody_.bytes());
    return loadNode(body, false, true, !attributes, attributes);
}

} // namespace qel
