// Building nodes from the compiled form of a tree.
#include "CNodeLoader.h"

#include "CNodeCursor.h"

namespace qel {

CError CNodeLoader::load(CObject& object, bool fullInit, bool skipHead, bool skipAttributes,
                         bool skipChildren)
{
    const CObject::CHold hold(object); // handlers may release what comes up
    const CString& where = object.fullName_;
    QEL_TRY(cursor_.enterNode(), where);
    if (skipHead) {
        QEL_TRY(cursor_.skipString(), where);
        QEL_TRY(cursor_.skipString(), where);
    }
    std::uint32_t templateFlag = 0;
    QEL_TRY(cursor_.readU32(templateFlag), where);
    object.isTemplate_ = templateFlag != 0;
    if (object.isTemplate_) {
        QEL_TRY(loadTemplateBody(object), where);
        cursor_.leaveNode();
        return {};
    }
    QEL_TRY(loadAttributes(object, skipAttributes), where);
    if (fullInit) {
        QEL_TRY(object.init(), where);
    }
    if (fullInit && !object.isReleased()) {
        QEL_TRY(object.applyAttrs(), where);
    }
    if (!skipChildren) {
        QEL_TRY(loadChildren(object), where);
    }
    if (fullInit && !object.isReleased()) {
        QEL_TRY(object.initChilds(), where);
        object.initState_ = CObject::InitState::kReady;
    }
    cursor_.leaveNode();
    return {};
}

CError CNodeLoader::loadTemplateBody(CObject& holder)
{
    const CString& where = holder.fullName_;
    if (holder.template_) {
        // An instance that became a holder would instantiate itself without end.
        QEL_FAIL(where, "@qelstr_CObject_loadTemplateBody Body of template '%1' is a template itself.",
                 holder.tag_);
    }
    std::string_view contentTag;
    std::string_view body;
    QEL_TRY(cursor_.readBytes(contentTag), where);
    QEL_TRY(cursor_.readBytes(body), where);
    const std::span node(reinterpret_cast<const std::uint8_t*>(body.data()), body.size());
    holder.templateBody_.reset(new CObject::CTemplateBody{contentTag, CByteBuffer(node)});
    QEL_TRY(holder.applyAttrs(), where);
    QEL_TRY(holder.initChilds(), where);
    holder.initState_ = CObject::InitState::kReady;
    return {};
}

CError CNodeLoader::loadAttributes(CObject& object, bool skip)
{
    const CString& where = object.fullName_;
    std::uint32_t count = 0;
    QEL_TRY(cursor_.readU32(count), where);
    for (auto left = static_cast<std::int32_t>(count); left > 0; --left) {
        std::string_view key;
        std::string_view value;
        QEL_TRY(cursor_.readBytes(key), where);
        QEL_TRY(cursor_.readBytes(value), where);
        if (!skip) {
            QEL_TRY(object.setAttribute(key, CString::fromUtf8(value), false), where);
        }
    }
    return {};
}

CError CNodeLoader::loadChildren(CObject& object)
{
    std::uint32_t count = 0;
    QEL_TRY(cursor_.readU32(count), object.fullName_);
    for (auto left = static_cast<std::int32_t>(count); left > 0 && !object.isReleased(); --left) {
        QEL_TRY(loadChild(object), object.fullName_);
    }
    return {};
}

CError CNodeLoader::loadChild(CObject& parent)
{
    std::string_view tag;
    std::string_view name;
    QEL_TRY(cursor_.readBytes(tag), parent.fullName_);
    QEL_TRY(cursor_.readBytes(name), parent.fullName_);

    CObject* child = nullptr;
    if (CError error = parent.createChildRaw(child, tag, name, false)) {
        CObject::releaseObject(child);
        return error;
    }
    const CObject::CHold hold(*child);
    if (CError error = load(*child, true, false, false, false)) {
        CObject::releaseObject(child);
        return error;
    }
    if (child->isTemplate_) {
        parent.registerTemplate(*child);
    }
    return {};
}

CError CNodeLoader::replayTemplate(CObject& object, bool attributes)
{
    CNodeCursor body(object.template_->templateBody_->node.bytes());
    return CNodeLoader(body).load(object, false, true, !attributes, attributes);
}

} // namespace qel
