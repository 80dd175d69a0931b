#include "KXCameraControl/ports/NameList.h"

#include <sstream>

namespace kx
{

std::vector<std::string> nameList(const char* text)
{
    std::vector<std::string> parts;
    std::istringstream stream(text ? text : "");
    for (std::string part; std::getline(stream, part, ',');) {
        const size_t begin = part.find_first_not_of(" \t");
        if (begin != std::string::npos)
            parts.push_back(part.substr(begin, part.find_last_not_of(" \t") - begin + 1));
    }
    return parts;
}

} // namespace kx
