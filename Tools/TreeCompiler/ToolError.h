// How the tools give up.
#pragma once

#include <stdexcept>
#include <string>

namespace qel::tools {

// A failure that ends the tool; the text is complete, with the file's name where there is one.
class CToolError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

} // namespace qel::tools
