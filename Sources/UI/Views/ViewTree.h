// Walks over trees that have views in them.
#pragma once

#include "CObject.h"

#include <deque>
#include <vector>

namespace qel {

namespace detail {

template <class View>
void collectViewsBelow(CObject& object, std::vector<View*>& out)
{
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        CObject& child = *object.getChild(i);
        if (auto* view = dynamic_cast<View*>(&child)) {
            out.push_back(view);
        } else {
            collectViewsBelow(child, out);
        }
    }
}

} // namespace detail

// The nearest views below an object, in the order of the tree. Views below a plain object are its parent
// view's.
template <class View>
std::vector<View*> viewsBelow(CObject& object)
{
    std::vector<View*> views;
    detail::collectViewsBelow(object, views);
    return views;
}

// Calls `action` for each of them; it may change the tree.
template <class View, class Action>
void forEachViewBelow(CObject& object, Action&& action)
{
    const std::vector<View*> views = viewsBelow<View>(object);
    std::deque<CObject::CHold> holds;
    for (View* view : views) {
        holds.emplace_back(*view);
    }
    for (View* view : views) {
        if (!view->isReleased()) {
            action(*view);
        }
    }
}

} // namespace qel
