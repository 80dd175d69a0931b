// The text of a feature bag and its file.
#include "KXCameraControl/bag/FeatureBag.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>

namespace kx
{
namespace
{

constexpr char kIdentification[] = "# {05D8C294-F295-4dfb-9D01-096BD04049F4}";
constexpr size_t kMaxFileSize = 64u << 20;

// "{Sel=Val,Sel=Val}" -> pairs. False when it is no such text.
bool parseSelectors(const std::string& text, std::vector<std::pair<std::string, std::string>>& selectors)
{
    if (text.size() < 2 || text.front() != '{' || text.back() != '}')
        return false;
    std::istringstream parts(text.substr(1, text.size() - 2));
    std::string part;
    while (std::getline(parts, part, ',')) {
        part.erase(0, part.find_first_not_of(' '));
        const size_t equals = part.find('=');
        if (equals == std::string::npos || equals == 0)
            return false;
        selectors.emplace_back(part.substr(0, equals), part.substr(equals + 1));
    }
    return !selectors.empty();
}

KX_Status readFile(const std::string& path, std::string& text, std::string& message)
{
    struct stat about;
    if (stat(path.c_str(), &about) != 0) {
        message = "The feature file " + path + " cannot be opened: " + std::strerror(errno);
        return KX_E_FILE;
    }
    if (!S_ISREG(about.st_mode)) {
        message = "The feature file " + path + " cannot be opened: it is no file";
        return KX_E_FILE;
    }
    if (static_cast<size_t>(about.st_size) > kMaxFileSize) {
        message = "The feature file " + path + " is larger than 64 MiB.";
        return KX_E_FILE_FORMAT;
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        message = "The feature file " + path + " cannot be read.";
        return KX_E_FILE;
    }
    text = content.str();
    return KX_OK;
}

// Through a temporary and a rename: whoever looks at `path` sees the old file or the whole new one.
KX_Status writeFile(const std::string& path, const std::string& text, std::string& message)
{
    const std::string temporary = path + ".part";
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    bool ok = file != nullptr;
    if (file) {
        ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        ok = std::fflush(file) == 0 && ok;
        ok = std::fclose(file) == 0 && ok;
        ok = ok && std::rename(temporary.c_str(), path.c_str()) == 0;
    }
    if (ok)
        return KX_OK;
    message = "The feature file " + path + " cannot be written: " + std::strerror(errno);
    if (file)
        std::remove(temporary.c_str());
    return KX_E_FILE;
}

} // namespace

std::string bagText(const BagIdentity& identity, const std::vector<BagEntry>& entries)
{
    std::string out = kIdentification;
    out += "\n# GenApi persistence file (version 3.0.0)\n";
    out += "# Device = " + identity.vendor + "::" + identity.model +
           " -- Device version = " + identity.deviceVersion + "\n";
    for (const BagEntry& entry : entries)
        out += entry.name + "\t" + entry.value + "\n";
    return out;
}

bool parseBag(const std::string& text, std::vector<BagEntry>& entries, std::string& error)
{
    std::istringstream lines(text);
    std::string line;
    size_t number = 0;
    while (std::getline(lines, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (++number == 1) {
            if (line != kIdentification) {
                error = "it does not begin with the identification line of a GenApi persistence file";
                return false;
            }
            continue;
        }
        if (line.empty() || line[0] == '#')
            continue;
        const size_t tab = line.find('\t');
        if (tab == std::string::npos || tab == 0) {
            error = "line " + std::to_string(number) + " is no \"name<TAB>value\"";
            return false;
        }
        BagEntry entry{line.substr(0, tab), {}, line.substr(tab + 1)};
        const size_t second = entry.value.find('\t');
        if (second != std::string::npos && parseSelectors(entry.value.substr(0, second), entry.selectors))
            entry.value.erase(0, second + 1);
        entries.push_back(entry);
    }
    if (number == 0)
        error = "it is empty";
    return number > 0;
}

KX_Status saveBag(BagNodes& nodes, const BagIdentity& identity, const std::string& path, std::string& message)
{
    std::vector<BagEntry> entries;
    const KX_Status status = collectBag(nodes, entries, message);
    if (status != KX_OK)
        return status;
    const std::string remark = message;
    const KX_Status written = writeFile(path, bagText(identity, entries), message);
    return written == KX_OK && !remark.empty() ? KX_E_INCOMPLETE : written;
}

KX_Status loadBag(BagNodes& nodes, const std::string& path, std::string& message)
{
    std::string text;
    const KX_Status read = readFile(path, text, message);
    if (read != KX_OK)
        return read;
    std::vector<BagEntry> entries;
    std::string error;
    if (!parseBag(text, entries, error)) {
        message = "The feature file " + path + " cannot be used: " + error + ".";
        return KX_E_FILE_FORMAT;
    }
    BagLoadReport report;
    const KX_Status status = applyBag(nodes, entries, report);
    message = report.text();
    return status;
}

} // namespace kx
