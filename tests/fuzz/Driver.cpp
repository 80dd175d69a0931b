// Runs one fuzz target without libFuzzer, in the suite: its seeds as they are, and random changes of them for
// some seconds. An input that breaks a promise, crashes, hangs or takes too much memory is left in the
// working folder.
//
//   PROGRAM TARGET DICTIONARY SEEDS...   folders; changes for FUZZ_SECONDS (10), by FUZZ_SEED (1)
//   PROGRAM TARGET FILE                  that input alone
#include "fuzz/Fuzz.h"
#include "fuzz/Targets.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

namespace
{

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

constexpr size_t kLargest = 16 * 1024;
constexpr unsigned kHangSeconds = 60;          // a machine may be slow
constexpr long kMostMemory = 2L * 1024 * 1024; // KiB; the process and its libraries included
constexpr uint8_t kEdges[] = {0, 1, 0x7F, 0x80, 0xFF, '<', '"', '\n', '%', '='};

// What a signal's handler needs of the input in hand.
Bytes inHand;
char leftBehind[200];

void leaveInput()
{
    if (FILE* file = std::fopen(leftBehind, "wb")) {
        std::fwrite(inHand.data(), 1, inHand.size(), file);
        std::fclose(file);
    }
}

void onSignal(int number)
{
    leaveInput();
    std::fprintf(stderr, "%s; the input is %s\n", number == SIGALRM ? "it hangs" : "it ends by a signal",
                 leftBehind);
    std::_Exit(1);
}

long peakMemory()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

Bytes contentOf(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

std::vector<Bytes> seedsIn(char** folders, char** end)
{
    std::vector<std::filesystem::path> files;
    for (; folders != end; ++folders)
        for (const auto& entry : std::filesystem::directory_iterator(*folders))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<Bytes> seeds;
    for (const auto& file : files)
        seeds.push_back(contentOf(file));
    return seeds;
}

// libFuzzer's form: a text in quotes a line, with \xHH, \\ and \" in it.
std::vector<Bytes> wordsIn(const std::string& path)
{
    std::vector<Bytes> words;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const size_t begin = line.find('"');
        const size_t end = line.rfind('"');
        if (line.empty() || line[0] == '#' || begin == end)
            continue;
        Bytes word;
        for (size_t i = begin + 1; i < end; ++i) {
            if (line[i] == '\\' && line[i + 1] == 'x') {
                word.push_back(static_cast<uint8_t>(std::stoi(line.substr(i + 2, 2), nullptr, 16)));
                i += 3;
            } else {
                i += line[i] == '\\';
                word.push_back(static_cast<uint8_t>(line[i]));
            }
        }
        words.push_back(word);
    }
    return words;
}

class Changes
{
public:
    Changes(std::vector<Bytes> seeds, std::vector<Bytes> words, unsigned random)
        : m_seeds(std::move(seeds)), m_words(std::move(words)), m_random(random)
    {}

    Bytes next()
    {
        Bytes input = m_seeds[pick(m_seeds.size())];
        for (size_t left = 1 + pick(8); left > 0; --left)
            change(input);
        input.resize(std::min(input.size(), kLargest));
        return input;
    }

private:
    size_t pick(size_t count) { return m_random() % count; }

    void change(Bytes& input)
    {
        const size_t at = pick(input.size() + 1);
        const size_t length = std::min(input.size() - at, size_t(1) << pick(9));
        const auto place = input.begin() + static_cast<ptrdiff_t>(at);
        const auto end = place + static_cast<ptrdiff_t>(length);
        switch (pick(7)) {
        case 0:
            if (length > 0)
                *place = static_cast<uint8_t>(*place ^ 1u << pick(8));
            break;
        case 1:
            if (length > 0)
                *place = kEdges[pick(std::size(kEdges))];
            break;
        case 2:
            input.erase(place, end);
            break;
        case 3:
            insert(input, at, Bytes(place, end));
            break;
        case 4:
            insert(input, at, someOf(m_seeds[pick(m_seeds.size())]));
            break;
        default: // a word, now and then in the place of something
            if (pick(2) == 0)
                input.erase(place, end);
            if (!m_words.empty())
                insert(input, at, m_words[pick(m_words.size())]);
        }
    }

    Bytes someOf(const Bytes& other)
    {
        const size_t from = pick(other.size() + 1);
        const size_t length = std::min(other.size() - from, size_t(1) << pick(10));
        const auto begin = other.begin() + static_cast<ptrdiff_t>(from);
        return Bytes(begin, begin + static_cast<ptrdiff_t>(length));
    }

    static void insert(Bytes& input, size_t at, const Bytes& piece)
    {
        input.insert(input.begin() + static_cast<ptrdiff_t>(at), piece.begin(), piece.end());
    }

    const std::vector<Bytes> m_seeds;
    const std::vector<Bytes> m_words;
    std::mt19937 m_random;
};

void run(const fuzz::Target& target, Bytes input)
{
    inHand = std::move(input);
    alarm(kHangSeconds);
    target.run(inHand.data(), inHand.size());
    alarm(0);
    if (peakMemory() < kMostMemory)
        return;
    leaveInput();
    std::fprintf(stderr, "it takes %ld MiB; the input is %s\n", peakMemory() / 1024, leftBehind);
    std::_Exit(1);
}

unsigned numberOf(const char* variable, unsigned otherwise)
{
    const char* text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

void runChanges(const fuzz::Target& target, const std::vector<Bytes>& seeds, const std::string& dictionary)
{
    const unsigned seconds = numberOf("FUZZ_SECONDS", 10);
    const unsigned random = numberOf("FUZZ_SEED", 1); // the suite tries the same each time
    std::printf("FUZZ_SEED=%u\n", random);
    std::fflush(stdout);
    Changes changes(seeds, wordsIn(dictionary), random);
    const auto end = Clock::now() + std::chrono::seconds(seconds);
    unsigned long count = 0;
    for (; Clock::now() < end; ++count)
        run(target, changes.next());
    std::printf("%s: %zu seeds, %lu changes in %u s, %ld MiB at most\n", target.name, seeds.size(), count,
                seconds, peakMemory() / 1024);
}

} // namespace

int main(int argc, char** argv)
{
    const auto target =
        std::find_if(std::begin(fuzz::targets), std::end(fuzz::targets),
                     [&](const fuzz::Target& one) { return argc > 2 && one.name == std::string(argv[1]); });
    if (target == std::end(fuzz::targets)) {
        std::fprintf(stderr, "usage: %s TARGET DICTIONARY SEEDS... | TARGET FILE\n", argv[0]);
        return 2;
    }
    std::snprintf(leftBehind, sizeof leftBehind, "fuzz-%s-%ld.input", target->name,
                  static_cast<long>(getpid()));
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM})
        std::signal(number, onSignal);
    if (argc == 3) {
        run(*target, contentOf(argv[2]));
        return 0;
    }
    const std::vector<Bytes> seeds = seedsIn(argv + 3, argv + argc);
    if (seeds.empty()) {
        std::fprintf(stderr, "%s: there are no seeds\n", target->name);
        return 2;
    }
    for (const Bytes& seed : seeds)
        run(*target, seed);
    runChanges(*target, seeds, argv[2]);
    return 0;
}
