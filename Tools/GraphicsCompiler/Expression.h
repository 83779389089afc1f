// Numbers in the sources of images: "{w / 2 + snap(3)}".
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qel::tools {

// What an expression can name. An inner scope sees what the outer ones hold and may hide it.
class CScope
{
public:
    CScope() = default;
    // `outer` must outlive the scope.
    explicit CScope(const CScope* outer) : outer_(outer) {}

    void set(const std::string& name, double value) { values_[name] = value; }
    // Null if no scope holds the name.
    const double* find(std::string_view name) const;

private:
    const CScope* outer_ = nullptr;
    std::map<std::string, double, std::less<>> values_;
};

class CExpressionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Numbers, names, + - * / % ( ), comparisons < <= > >= == != (1 or 0), and the functions
//
//   sin cos (degrees)  abs min max floor ceil round
//   snap(x)          the device pixel's edge next to x; needs `scale`
//   mid(x)           the middle of the device pixel that x lies in: where a line of one pixel is sharp
//   if(c, a, b)      a if c is not 0, else b
//   pick(i, a, ...)  the i-th of the values that follow, from 0
//
// Throws CExpressionError for what is no such expression, and for a result that is no finite number.
double evaluate(std::string_view expression, const CScope& scope);

// `text` with each "{expression}" replaced by its value in plain decimals, at most six behind the point.
std::string fillIn(std::string_view text, const CScope& scope);

} // namespace qel::tools
