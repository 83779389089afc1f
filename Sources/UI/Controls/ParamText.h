// How the value of a parameter is written.
#pragma once

#include "CUIParam.h"

namespace qel {

// The text of an element with its unit: "-6.0 dB"; a "k" joins the unit: "1.20 kHz".
inline CString textWithUnit(const CUIParam& param, std::int32_t element)
{
    const CString text = param.getText(element);
    const CString unit = param.getUnit(element);
    if (unit.isEmpty() || text.isEmpty()) {
        return text;
    }
    const std::size_t last = text.length() - 1;
    return text[last] == u'k' ? text.substring(0, last) + " k" + unit : text + " " + unit;
}

} // namespace qel
