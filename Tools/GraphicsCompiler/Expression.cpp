// Numbers in the sources of images.
#include "GraphicsCompiler/Expression.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <numbers>
#include <vector>

namespace qel::tools {

namespace {

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr int kMostParentheses = 64;

using Arguments = std::vector<double>;

struct Function
{
    std::string_view name;
    std::size_t least;
    std::size_t most;
    double (*call)(const Arguments&, double scale);
};

constexpr std::size_t kAny = 1000;

const Function kFunctions[] = {
    {"sin", 1, 1, [](const Arguments& a, double) { return std::sin(a[0] * kDegree); }},
    {"cos", 1, 1, [](const Arguments& a, double) { return std::cos(a[0] * kDegree); }},
    {"abs", 1, 1, [](const Arguments& a, double) { return std::abs(a[0]); }},
    {"min", 1, kAny, [](const Arguments& a, double) { return *std::ranges::min_element(a); }},
    {"max", 1, kAny, [](const Arguments& a, double) { return *std::ranges::max_element(a); }},
    {"floor", 1, 1, [](const Arguments& a, double) { return std::floor(a[0]); }},
    {"ceil", 1, 1, [](const Arguments& a, double) { return std::ceil(a[0]); }},
    {"round", 1, 1, [](const Arguments& a, double) { return std::round(a[0]); }},
    {"snap", 1, 1, [](const Arguments& a, double scale) { return std::round(a[0] * scale) / scale; }},
    {"mid", 1, 1, [](const Arguments& a, double scale) { return (std::floor(a[0] * scale) + 0.5) / scale; }},
    {"if", 3, 3, [](const Arguments& a, double) { return a[0] != 0.0 ? a[1] : a[2]; }},
    {"pick", 2, kAny,
     [](const Arguments& a, double) {
         const bool isThere = a[0] >= 0.0 && a[0] < static_cast<double>(a.size() - 1);
         return isThere ? a[1 + static_cast<std::size_t>(a[0])] : std::nan("");
     }},
};

struct Operator
{
    std::string_view text;
    double (*apply)(double, double);
};

// From the loosest to the tightest; the longer texts of a row first.
const std::array<std::vector<Operator>, 3> kOperators = {{
    {{"<=", [](double a, double b) { return a <= b ? 1.0 : 0.0; }},
     {">=", [](double a, double b) { return a >= b ? 1.0 : 0.0; }},
     {"==", [](double a, double b) { return a == b ? 1.0 : 0.0; }},
     {"!=", [](double a, double b) { return a != b ? 1.0 : 0.0; }},
     {"<", [](double a, double b) { return a < b ? 1.0 : 0.0; }},
     {">", [](double a, double b) { return a > b ? 1.0 : 0.0; }}},
    {{"+", [](double a, double b) { return a + b; }}, {"-", [](double a, double b) { return a - b; }}},
    {{"*", [](double a, double b) { return a * b; }},
     {"/", [](double a, double b) { return a / b; }},
     {"%", [](double a, double b) { return std::fmod(a, b); }}},
}};

bool isNameStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

class CParser
{
public:
    CParser(std::string_view text, const CScope& scope) : text_(text), scope_(scope) {}

    double whole()
    {
        const double value = binary(0);
        skipBlanks();
        if (position_ != text_.size()) {
            fail("'" + std::string(text_.substr(position_)) + "' is left over");
        }
        return value;
    }

private:
    [[noreturn]] void fail(const std::string& why) const
    {
        throw CExpressionError(why + " in '" + std::string(text_) + "'");
    }

    void skipBlanks() { position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size()); }

    bool take(std::string_view token)
    {
        skipBlanks();
        if (!text_.substr(position_).starts_with(token)) {
            return false;
        }
        position_ += token.size();
        return true;
    }

    void expect(std::string_view token)
    {
        if (!take(token)) {
            fail("'" + std::string(token) + "' expected");
        }
    }

    double binary(std::size_t level)
    {
        if (level == kOperators.size()) {
            return unary();
        }
        double value = binary(level + 1);
        for (;;) {
            const auto found = std::ranges::find_if(kOperators[level],
                                                    [&](const Operator& each) { return take(each.text); });
            if (found == kOperators[level].end()) {
                return value;
            }
            value = found->apply(value, binary(level + 1));
        }
    }

    double unary()
    {
        // Sources are written by people, but a slip of the hand must not end in an overflow of the stack.
        if (++depth_ > kMostParentheses) {
            fail("too many levels");
        }
        const double value = take("-") ? -unary() : primary();
        --depth_;
        return value;
    }

    double primary()
    {
        if (take("(")) {
            const double value = binary(0);
            expect(")");
            return value;
        }
        skipBlanks();
        if (position_ < text_.size() && isNameStart(text_[position_])) {
            return named();
        }
        double value = 0.0;
        const auto result = std::from_chars(text_.data() + position_, text_.data() + text_.size(), value,
                                            std::chars_format::fixed);
        if (result.ec != std::errc()) {
            fail("a number or a name expected");
        }
        position_ = static_cast<std::size_t>(result.ptr - text_.data());
        return value;
    }

    double named()
    {
        const std::size_t start = position_;
        while (position_ < text_.size() && (isNameStart(text_[position_]) || isDigit(text_[position_]))) {
            ++position_;
        }
        const std::string_view name = text_.substr(start, position_ - start);
        if (take("(")) {
            return call(name);
        }
        const double* value = scope_.find(name);
        if (value == nullptr) {
            fail("unknown name '" + std::string(name) + "'");
        }
        return *value;
    }

    double call(std::string_view name)
    {
        const auto function = std::ranges::find(kFunctions, name, &Function::name);
        if (function == std::end(kFunctions)) {
            fail("unknown function '" + std::string(name) + "'");
        }
        Arguments arguments;
        do {
            arguments.push_back(binary(0));
        } while (take(","));
        expect(")");
        if (arguments.size() < function->least || arguments.size() > function->most) {
            fail("wrong number of arguments of '" + std::string(name) + "'");
        }
        const double* scale = scope_.find("scale");
        return function->call(arguments, scale == nullptr ? 1.0 : *scale);
    }

    std::string_view text_;
    const CScope& scope_;
    std::size_t position_ = 0;
    int depth_ = 0;
};

std::string decimals(double value)
{
    std::array<char, 64> buffer = {};
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 6).ptr;
    std::string text(buffer.data(), end);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) {
        text.pop_back();
    }
    return text == "-0" ? "0" : text;
}

} // namespace

const double* CScope::find(std::string_view name) const
{
    const auto found = values_.find(name);
    if (found != values_.end()) {
        return &found->second;
    }
    return outer_ == nullptr ? nullptr : outer_->find(name);
}

double evaluate(std::string_view expression, const CScope& scope)
{
    const double value = CParser(expression, scope).whole();
    if (!std::isfinite(value) || std::abs(value) > 1e9) {
        throw CExpressionError("no usable number comes out of '" + std::string(expression) + "'");
    }
    return value;
}

std::string fillIn(std::string_view text, const CScope& scope)
{
    std::string result;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t open = std::min(text.find('{', position), text.size());
        result += text.substr(position, open - position);
        if (open == text.size()) {
            break;
        }
        const std::size_t close = text.find('}', open);
        if (close == text.npos) {
            throw CExpressionError("'{' without '}' in '" + std::string(text) + "'");
        }
        result += decimals(evaluate(text.substr(open + 1, close - open - 1), scope));
        position = close + 1;
    }
    return result;
}

} // namespace qel::tools
