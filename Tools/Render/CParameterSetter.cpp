// Parameters of a guest by name and in the units that it shows.
#include "Render/CParameterSetter.h"

#include "Render/DisplayNumber.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>

namespace qel::tools {

namespace {

// Enough that a list of a hundred names shows each of them.
constexpr int kTravelSteps = 512;
// Down to neighbouring floats.
constexpr int kHalvings = 30;
// A value that no position shows exactly is taken for its neighbour within half of the last digit shown, or
// within what positions of 32 bits can tell apart of the whole travel.
constexpr double kLastDigitShare = 0.5001;
constexpr double kFinestShare = 1e-6;

// What one more in the last digit of the text means.
double lastDigit(const std::string& text)
{
    const std::size_t point = text.find('.');
    if (point == text.npos) {
        return 1.0;
    }
    std::size_t digits = 0;
    while (point + 1 + digits < text.size() &&
           std::isdigit(static_cast<unsigned char>(text[point + 1 + digits]))) {
        ++digits;
    }
    const bool isThousands = text.find_first_of("kK") != text.npos;
    return std::pow(10.0, -static_cast<double>(digits)) * (isThousands ? 1000.0 : 1.0);
}

} // namespace

// Puts a parameter back where it was.
class CParameterSetter::CHold
{
public:
    CHold(CGuestPlugin& guest, int index) : guest_(guest), index_(index), norm_(guest.parameter(index)) {}
    ~CHold()
    {
        if (guest_.parameter(index_) != norm_) {
            guest_.setParameter(index_, norm_);
        }
    }
    CHold(const CHold&) = delete;
    CHold& operator=(const CHold&) = delete;

private:
    CGuestPlugin& guest_;
    int index_;
    float norm_;
};

int CParameterSetter::find(const std::string& nameOrIndex)
{
    std::vector<int> beginnings;
    for (int i = 0; i < guest_.parameterCount(); ++i) {
        const std::string name = guest_.parameterName(i);
        if (equalsIgnoringCase(name, nameOrIndex)) {
            return i;
        }
        if (startsIgnoringCase(name, nameOrIndex)) {
            beginnings.push_back(i);
        }
    }
    const std::optional<int> index = parseIndex(nameOrIndex);
    if (index && *index < guest_.parameterCount()) {
        return *index;
    }
    if (beginnings.size() == 1 && !nameOrIndex.empty()) {
        return beginnings.front();
    }
    throw CRenderError(CExitCode::kSetting, (beginnings.size() > 1 ? "More than one parameter begins with '"
                                                                   : "There is no parameter '") +
                                                nameOrIndex + "'; --list-parameters shows them");
}

void CParameterSetter::set(const std::string& assignment)
{
    const std::size_t equals = assignment.find('=');
    if (equals == assignment.npos) {
        throw CRenderError(CExitCode::kSetting, "'" + assignment + "' is not of the form NAME=VALUE");
    }
    const int index = find(trimmed(assignment.substr(0, equals)));
    guest_.setParameter(index, normFor(index, trimmed(assignment.substr(equals + 1))));
}

float CParameterSetter::normFor(int index, const std::string& value)
{
    if (const std::optional<float> norm = parseNorm(value)) {
        return *norm;
    }
    const CHold hold(guest_, index);
    const std::string label = guest_.parameterLabel(index);
    const std::optional<double> wanted = parseDisplayNumber(value, label);
    // Where it stands may be finer than any text.
    const std::string shown = guest_.parameterDisplay(index);
    const std::optional<double> shownNumber = parseDisplayNumber(shown, label);
    if (equalsIgnoringCase(shown, value) || (wanted && shownNumber && *wanted == *shownNumber)) {
        return guest_.parameter(index);
    }
    float norm = 0.0f;
    if (readByGuest(index, value, label, norm)) {
        return norm;
    }
    return wanted ? normForNumber(index, value, *wanted, label) : normForText(index, value);
}

// Some effects say yes and do something else: they are believed when they then show what was asked for.
bool CParameterSetter::readByGuest(int index, const std::string& value, const std::string& label,
                                   float& outNorm)
{
    if (!guest_.setParameterText(index, value)) {
        return false;
    }
    const std::string shown = guest_.parameterDisplay(index);
    const std::optional<double> wanted = parseDisplayNumber(value, label);
    const std::optional<double> got = parseDisplayNumber(shown, label);
    outNorm = guest_.parameter(index);
    if (!(outNorm >= 0.0f && outNorm <= 1.0f)) {
        return false;
    }
    return wanted && got ? std::abs(*wanted - *got) <= kLastDigitShare * lastDigit(shown)
                         : equalsIgnoringCase(shown, value);
}

std::string CParameterSetter::displayAt(int index, float norm)
{
    if (std::optional<std::string> told = guest_.displayAt(index, norm)) {
        return *told;
    }
    guest_.setParameter(index, norm);
    return guest_.parameterDisplay(index);
}

const std::vector<CParameterSetter::CShown>& CParameterSetter::travelOf(int index)
{
    std::vector<CShown>& travel = travels_[index];
    if (travel.empty()) {
        for (int step = 0; step <= kTravelSteps; ++step) {
            const float norm = static_cast<float>(step) / kTravelSteps;
            travel.push_back({norm, displayAt(index, norm)});
        }
    }
    return travel;
}

float CParameterSetter::normForText(int index, const std::string& value)
{
    const std::vector<CShown>& travel = travelOf(index);
    const CShown* found = nullptr;
    std::string beginning;
    for (const CShown& shown : travel) {
        if (equalsIgnoringCase(shown.text, value)) {
            found = &shown;
            break;
        }
        if (startsIgnoringCase(shown.text, value) && shown.text != beginning) {
            if (!beginning.empty()) {
                throw CRenderError(CExitCode::kSetting, "'" + value + "' may mean '" + beginning + "' or '" +
                                                            shown.text + "' of " +
                                                            guest_.parameterName(index));
            }
            beginning = shown.text;
            found = &shown;
        }
    }
    if (!found || value.empty()) {
        throw CRenderError(CExitCode::kSetting, guest_.parameterName(index) + " never shows '" + value +
                                                    "'; it goes from '" + travel.front().text + "' to '" +
                                                    travel.back().text + "'");
    }
    return middleOfRun(index, found->norm, found->text);
}

double CParameterSetter::spanOf(const std::vector<CShown>& travel, const std::string& label)
{
    double least = std::numeric_limits<double>::infinity();
    double greatest = -least;
    for (const CShown& shown : travel) {
        const std::optional<double> number = parseDisplayNumber(shown.text, label);
        if (number && std::isfinite(*number)) {
            least = std::min(least, *number);
            greatest = std::max(greatest, *number);
        }
    }
    return std::max(0.0, greatest - least);
}

float CParameterSetter::normForNumber(int index, const std::string& value, double wanted,
                                      const std::string& label)
{
    const std::vector<CShown>& travel = travelOf(index);
    std::optional<CShown> best;
    double bestError = std::numeric_limits<double>::infinity();
    const auto weigh = [&](float norm, const std::string& text) {
        const std::optional<double> number = parseDisplayNumber(text, label);
        const double error = !number             ? std::numeric_limits<double>::infinity()
                             : *number == wanted ? 0.0
                                                 : std::abs(*number - wanted);
        if (error < bestError) {
            bestError = error;
            best = CShown{norm, text};
        }
        return number;
    };
    std::optional<double> before;
    for (std::size_t i = 0; i < travel.size() && bestError > 0.0; ++i) {
        const std::optional<double> here = weigh(travel[i].norm, travel[i].text);
        if (before && here && (*before < wanted) != (*here < wanted) && bestError > 0.0) {
            const bool isRising = *here > *before;
            float low = travel[i - 1].norm;
            float high = travel[i].norm;
            for (int step = 0; step < kHalvings && bestError > 0.0; ++step) {
                const float middle = 0.5f * (low + high);
                const std::optional<double> number = weigh(middle, displayAt(index, middle));
                (number && (*number < wanted) == isRising ? low : high) = middle;
            }
        }
        before = here;
    }
    const double finest = kFinestShare * spanOf(travel, label);
    if (!best || !(bestError <= std::max(finest, kLastDigitShare * lastDigit(best->text)))) {
        const std::string nearest = best ? "; the closest it comes is '" + best->text + "'" : "";
        throw CRenderError(CExitCode::kSetting, guest_.parameterName(index) + " cannot be '" + value +
                                                    "': it goes from '" + travel.front().text + "' to '" +
                                                    travel.back().text + "'" + nearest);
    }
    return middleOfRun(index, best->norm, best->text);
}

// Of all neighbouring positions with this text the middle is the closest to what it says; but a run that
// reaches an end of the travel means that end.
float CParameterSetter::middleOfRun(int index, float norm, const std::string& text)
{
    const std::vector<CShown>& travel = travelOf(index);
    auto first = std::ranges::find_if(travel, [norm](const CShown& shown) { return shown.norm >= norm; });
    auto last = first;
    while (last != travel.end() && last->text == text) {
        ++last;
    }
    while (first != travel.begin() && std::prev(first)->text == text) {
        --first;
    }
    if (first == travel.begin()) {
        return travel.front().norm;
    }
    if (last == travel.end()) {
        return travel.back().norm;
    }
    const bool isBetweenSamples = first == last;
    const float lowest = isBetweenSamples ? norm : std::min(norm, first->norm);
    const float highest = isBetweenSamples ? norm : std::max(norm, std::prev(last)->norm);
    const float low = edgeOfRun(index, lowest, std::prev(first)->norm, text);
    const float high = edgeOfRun(index, highest, last->norm, text);
    return 0.5f * (low + high);
}

float CParameterSetter::edgeOfRun(int index, float inside, float outside, const std::string& text)
{
    for (int step = 0; step < kHalvings; ++step) {
        const float middle = 0.5f * (inside + outside);
        (displayAt(index, middle) == text ? inside : outside) = middle;
    }
    return inside;
}

} // namespace qel::tools
