// Where views lie, as the inspector prints it.
#pragma once

#include <istream>
#include <map>
#include <sstream>
#include <string>

namespace qel::test {

// In pixels of its window, as `drumfell-inspect --views` has it: tests go by names and stay when the design
// moves.
struct ViewPlace
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

using ViewPlaces = std::map<std::string, ViewPlace>;

// Lines are "path <tag> x y width height ...".
inline ViewPlaces readPlaces(std::istream& lines)
{
    ViewPlaces places;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string path;
        std::string tag;
        double numbers[4] = {};
        words >> path >> tag >> numbers[0] >> numbers[1] >> numbers[2] >> numbers[3];
        places[path] = {static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
                        static_cast<int>(numbers[2]), static_cast<int>(numbers[3])};
    }
    return places;
}

} // namespace qel::test
