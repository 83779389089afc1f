// Parameters of a guest by name and in the units that it shows.
#include "Render/CParameterSetter.h"

#include "Render/DisplayNumber.h"
#include "Render/RenderError.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace qel::tools {

namespace {

// Enough that a list of a hundred names shows each of them.
constexpr int kTravelSteps = 512;
// Down to neighbouring floats.
constexpr int kHalvings = 30;
// A value that no position shows exactly is taken for its neighbour within half of the last digit shown, or a
// little more: positions have 32 bits.
constexpr double kLastDigitShare = 0.5001;
constexpr double kFinestDigit = 1e-4;

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
    return std::max(kFinestDigit,
                    std::pow(10.0, -static_cast<double>(digits)) * (isThousands ? 1000.0 : 1.0));
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

const std::vector<CParameterSetter::CShown>& CParameterSetter::travelOf(int index)
{
    std::vector<CShown>& travel = travels_[index];
    if (travel.empty()) {
        for (int step = 0; step <= kTravelSteps; ++step) {
            const float norm = static_cast<float>(step) / kTravelSteps;
            guest_.setParameter(index, norm);
            travel.push_back({norm, guest_.parameterDisplay(index)});
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
    return middleOfRun(index, *found);
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
                             : *number == wanted ? 0.0 // both may be infinite
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
                guest_.setParameter(index, middle);
                const std::optional<double> number = weigh(middle, guest_.parameterDisplay(index));
                (number && (*number < wanted) == isRising ? low : high) = middle;
            }
        }
        before = here;
    }
    if (!best || !(bestError <= kLastDigitShare * lastDigit(best->text))) {
        const std::string nearest = best ? "; the closest it comes is '" + best->text + "'" : "";
        throw CRenderError(CExitCode::kSetting, guest_.parameterName(index) + " cannot be '" + value +
                                                    "': it goes from '" + travel.front().text + "' to '" +
                                                    travel.back().text + "'" + nearest);
    }
    return middleOfRun(index, *best);
}

// Of all neighbouring positions with this text the middle is the closest to what it says; but a run that
// reaches an end of the travel means that end.
float CParameterSetter::middleOfRun(int index, const CShown& found)
{
    const std::vector<CShown>& travel = travelOf(index);
    const auto isOther = [&](const CShown& shown) { return shown.text != found.text; };
    const auto at =
        std::ranges::find_if(travel, [&](const CShown& shown) { return shown.norm >= found.norm; });
    const auto last = std::find_if(at, travel.end(), isOther);
    const auto before = std::find_if(std::make_reverse_iterator(at), travel.rend(), isOther);
    if (before == travel.rend()) {
        return travel.front().norm;
    }
    if (last == travel.end()) {
        return travel.back().norm;
    }
    return last - before.base() < 2 ? found.norm : 0.5f * (before.base()->norm + std::prev(last)->norm);
}

} // namespace qel::tools
