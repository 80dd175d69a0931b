// What the platform's calls really do off Windows.
#include "startup/PlatformCalls.h"
#include "startup/RuntimeFolder_posix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Platform;

namespace
{

constexpr wchar_t kName[] = L"platform_calls_test";

class PlatformCallsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        char name[] = "/tmp/platform_calls_XXXXXX";
        m_folder = mkdtemp(name);
        setenv("XDG_RUNTIME_DIR", m_folder.c_str(), 1);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    // Runs `body` in a process of its own; its result is the exit code.
    template <typename Body>
    static int inAnotherProcess(Body body)
    {
        const pid_t child = fork();
        if (child == 0)
            _exit(body());
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string m_folder;
    const Calls& m_calls = systemCalls();
};

// A host that writes down what it is asked.
struct Host
{
    std::mutex lock;
    std::wstring title = L"\u5BFC\u5165/x";
    std::atomic<int> shown{0}, raised{0};

    WindowHost host()
    {
        return {[this](const std::wstring& asked) { return asked == title; }, [this] { ++shown; },
                [this] { ++raised; }};
    }
};

} // namespace

TEST_F(PlatformCallsTest, aMutexIsFoundByOtherProcessesAsLongAsItIsOpen)
{
    EXPECT_EQ(m_calls.OpenMutexW(kMutexAllAccess, 0, kName), nullptr);
    const Handle mutex = m_calls.CreateMutexW(nullptr, 1, kName);
    ASSERT_NE(mutex, nullptr);
    const auto isThere = [&] { return m_calls.OpenMutexW(kMutexAllAccess, 0, kName) != nullptr; };
    EXPECT_EQ(inAnotherProcess(isThere), 1);
    EXPECT_EQ(m_calls.CloseHandle(mutex), 1);
    EXPECT_EQ(inAnotherProcess(isThere), 0) << "the lock file that stays behind is no mutex";
}

TEST_F(PlatformCallsTest, aMutexEndsWithItsProcess)
{
    EXPECT_EQ(inAnotherProcess([&] { return m_calls.CreateMutexW(nullptr, 1, kName) ? 7 : 0; }), 7);
    EXPECT_EQ(m_calls.OpenMutexW(kMutexAllAccess, 0, kName), nullptr);
}

TEST_F(PlatformCallsTest, twoCreatorsBothGetAHandle)
{
    const Handle first = m_calls.CreateMutexW(nullptr, 1, kName);
    EXPECT_EQ(inAnotherProcess([&] { return m_calls.CreateMutexW(nullptr, 1, kName) != nullptr; }), 1);
    m_calls.CloseHandle(first);
}

TEST_F(PlatformCallsTest, closingNothingFails)
{
    EXPECT_EQ(m_calls.CloseHandle(nullptr), 0);
}

TEST_F(PlatformCallsTest, anotherProcessFindsShowsAndRaisesTheWindow)
{
    Host host;
    setWindowHost(host.host());
    const int result = inAnotherProcess([&] {
        if (m_calls.FindWindowW(nullptr, L"another title"))
            return 1;
        const Window window = m_calls.FindWindowW(nullptr, L"\u5BFC\u5165/x");
        if (!window)
            return 2;
        if (!m_calls.ShowWindow(window, kShowNoActivate))
            return 3;
        return m_calls.SetForegroundWindow(window) ? 0 : 4;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(host.shown, 1);
    EXPECT_EQ(host.raised, 1);
    setWindowHost({});
    EXPECT_EQ(m_calls.FindWindowW(nullptr, L"\u5BFC\u5165/x"), nullptr);
}

TEST_F(PlatformCallsTest, theFirstFolderThatIsOursAloneIsTaken)
{
    const FolderChoice choice = chooseFolder({{m_folder, false}, {m_folder + "/other", true}});
    EXPECT_EQ(choice.path, m_folder);
    EXPECT_EQ(choice.complaint, "");
    EXPECT_FALSE(std::filesystem::exists(m_folder + "/other")) << "made only when it is needed";
}

TEST_F(PlatformCallsTest, aFolderThatOthersCanWriteToIsNotTrusted)
{
    const std::string own = m_folder + "/own";
    for (const mode_t mode : {0777u, 0720u, 0702u, 01777u}) {
        chmod(m_folder.c_str(), mode);
        const FolderChoice choice = chooseFolder({{m_folder, false}, {own, true}});
        EXPECT_EQ(choice.path, own) << std::oct << mode;
        EXPECT_EQ(choice.complaint,
                  "The folder " + m_folder + " is not used for the lock: other users can write to it.\n");
    }
    EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
    chmod(m_folder.c_str(), 0755);
    EXPECT_EQ(chooseFolder({{m_folder, false}}).path, m_folder) << "others may look";
}

TEST_F(PlatformCallsTest, aFolderOfAnotherUserIsNotTrusted)
{
    if (chown(m_folder.c_str(), 65534, 65534) != 0)
        GTEST_SKIP() << "Skipped: only root gives folders away";
    EXPECT_EQ(chooseFolder({{m_folder, true}}).complaint,
              "The folder " + m_folder +
                  " is not used for the lock: it belongs to another user.\n"
                  "No folder for the lock: a second copy is not noticed.\n");
}

TEST_F(PlatformCallsTest, whatIsNoFolderIsNotTrusted)
{
    const std::string link = m_folder + "/link", file = m_folder + "/file", missing = m_folder + "/missing";
    std::filesystem::create_directory_symlink(m_folder, link);
    std::ofstream(file) << "x";
    const FolderChoice choice = chooseFolder({{link, true}, {file, true}, {missing, false}});
    EXPECT_EQ(choice.path, "");
    EXPECT_EQ(choice.complaint, "The folder " + link +
                                    " is not used for the lock: it is no folder, or a link to one.\n"
                                    "The folder " +
                                    file +
                                    " is not used for the lock: it is no folder, or a link to one.\n"
                                    "The folder " +
                                    missing +
                                    " is not used for the lock: No such file or directory.\n"
                                    "No folder for the lock: a second copy is not noticed.\n");
}

TEST_F(PlatformCallsTest, theMutexDoesNotLieInAFolderThatIsNotTrusted)
{
    chmod(m_folder.c_str(), 0777);
    const std::string home = m_folder + "/home";
    std::filesystem::create_directory(home);
    setenv("HOME", home.c_str(), 1);
    testing::internal::CaptureStderr();
    const Handle first = m_calls.CreateMutexW(nullptr, 1, kName);
    const Handle second = m_calls.OpenMutexW(kMutexAllAccess, 0, kName);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "The folder " + m_folder + " is not used for the lock: other users can write to it.\n")
        << "told once";
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr) << "both copies come to the same folder";
    EXPECT_FALSE(std::filesystem::exists(m_folder + "/platform_calls_test.lock"));
    m_calls.CloseHandle(first);
    m_calls.CloseHandle(second);
}

TEST_F(PlatformCallsTest, aNullWindowIsTakenWithoutACrash)
{
    EXPECT_EQ(m_calls.ShowWindow(nullptr, kShowNoActivate), 0);
    EXPECT_EQ(m_calls.SetForegroundWindow(nullptr), 0);
}

TEST_F(PlatformCallsTest, aCrashRunsTheFilterAndEndsBySignal)
{
    const std::string note = m_folder + "/note";
    static std::string path;
    path = note;
    const int result = inAnotherProcess([&] {
        m_calls.SetUnhandledExceptionFilter([](ExceptionPointers* pointers) -> long {
            std::ofstream(path) << (pointers ? "filter ran" : "no pointers");
            return kExceptionExecuteHandler;
        });
        raise(SIGSEGV);
        return 0;
    });
    EXPECT_EQ(result, -SIGSEGV);
    std::string text;
    std::getline(std::ifstream(note), text);
    EXPECT_EQ(text, "filter ran");
}

TEST_F(PlatformCallsTest, aFolderCannotBeOpenedAsAFileAndTheBacktraceLiesBesideIt)
{
    const std::string folder = m_folder + "/Dump";
    std::filesystem::create_directory(folder);
    EXPECT_EQ(m_calls.CreateFileA(folder.c_str(), kGenericWrite, 0, nullptr, kCreateAlways,
                                  kFileAttributeNormal, nullptr),
              nullptr);
    const DumpException exception = {m_calls.GetCurrentThreadId(), nullptr, 1};
    EXPECT_EQ(m_calls.MiniDumpWriteDump(m_calls.GetCurrentProcess(), m_calls.GetCurrentProcessId(), nullptr,
                                        kMiniDumpNormal, &exception, nullptr, nullptr),
              1);
    bool found = false;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder))
        if (entry.path().string().rfind(folder + "_", 0) == 0)
            found = std::filesystem::file_size(entry) > 100;
    EXPECT_TRUE(found);
}
