#include "camera_emulator/Options.h"

#include "camera_emulator/Files.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <tuple>

namespace emu
{
namespace
{

const char kFaults[] =
    "A fault, repeatable. N counts packets, AFTER counts register commands, MS is milliseconds:\n"
    "lose=N lose-answers=N        every n-th packet is lost\n"
    "delay=MS                     before every answer\n"
    "silent[=AFTER[:MS]]          no answers at all, for ever or for a time\n"
    "discovery-only               nothing but discovery is answered\n"
    "refuse=ADDRESS[:STATUS[:LENGTH]]  error status for an address (0x8003, 4 bytes)\n"
    "forget=ADDRESS               UserSetSave leaves this word as it was delivered\n"
    "busy=N                       the next n commands answer BUSY\n"
    "pending=MS[:N]               PENDING_ACK first, the answer MS later\n"
    "steal=AFTER                  another host takes control\n"
    "cut-description=BYTES        the description ends early\n"
    "no-concatenation             one register per packet, and says so\n"
    "refuse-concatenation         one register per packet, and does not say so";

// What one group of the command line is read into.
struct Group
{
    CameraOptions camera;
    std::vector<std::string> faults;
    std::string transport; // as it was given; empty: not
    std::string seedFile;
    unsigned latency = 0;
    unsigned restartTime = 100;
};

void addCommonOptions(CLI::App& app, Options& options)
{
    app.add_option("--stats", options.statsFile,
                   "Where the counters go as JSON at the end (standard output)");
    app.add_option("--ready-file", options.readyFile, "A file that appears when all cameras listen");
}

void addCameraOptions(CLI::App& app, Group& group)
{
    CameraConfig& config = group.camera.config;
    app.add_option("--address", config.address, "Local IPv4 address; begins a GigE Vision camera");
    app.add_option("--mask", config.mask, "GigE Vision: mask of the address's network")
        ->capture_default_str();
    app.add_option("--mac", config.mac, "GigE Vision: MAC address (made of the address)");
    app.add_flag_callback(
        "--as-delivered", [&config] { config.isPersistent = false; },
        "GigE Vision: the camera keeps no address; --address is its link-local one");
    app.add_option("--dhcp-address", config.dhcpAddress,
                   "GigE Vision: what a DHCP server gives the camera when it is switched on");
    app.add_option("--restart-time", group.restartTime,
                   "Milliseconds from DeviceReset until the camera answers again")
        ->capture_default_str();
    app.add_option("--link", group.camera.serial.link,
                   "Symbolic link that leads to a terminal; begins a camera behind a serial line");
    app.add_option(
        "--socket", group.camera.grabber.socket,
        "Local socket; begins a camera behind a frame grabber, which camera_emulator_gentl.cti shows");
    app.add_option("--layer", group.camera.grabber.layer, "GenTL: name of the transport layer")
        ->capture_default_str();
    app.add_option("--interface", group.camera.grabber.interface, "GenTL: the grabber's interface")
        ->capture_default_str();
    app.add_option("--transport", group.transport,
                   "What the camera speaks; follows from its place. usb3 is refused: the system has no place "
                   "for an emulated USB device")
        ->check(CLI::IsMember({"gige", "serial", "gentl"}));
    app.add_option("--baud", group.camera.serial.baud, "Serial: the rate that the camera listens at first")
        ->capture_default_str();
    app.add_flag("--paced", group.camera.serial.isPaced, "Serial: answers take as long as the rate says");
    app.add_option("--noise", group.camera.serial.noise, "Serial: every n-th answer is hit by noise");
    app.add_option("--drop-bytes", group.camera.serial.dropped,
                   "Serial: of every n-th answer a byte is missing");
    app.add_option("--description", config.descriptionFile, "GenICam description, XML (the emulator's own)");
    app.add_option("--serial", config.serial, "Serial number")->capture_default_str();
    app.add_option("--model", config.model, "Model name")->capture_default_str();
    app.add_option("--manufacturer", config.manufacturer, "Manufacturer's name")->capture_default_str();
    app.add_option("--user-name", config.userName, "User-defined name");
    app.add_option("--firmware", config.firmware, "Device version that discovery tells")
        ->capture_default_str();
    app.add_option("--seed", group.seedFile, "First contents of the registers, JSON");
    app.add_option("--changes", group.camera.changesFile,
                   "Contents of registers as --seed, written at each SIGUSR1; then \"changed\" is printed");
    app.add_flag("--zipped", config.zipped, "The first URL names the zipped description");
    app.add_option("--first-url", config.firstUrl, "First URL instead; {name} {address} {length} {schema}");
    app.add_option("--second-url", config.secondUrl, "Second URL instead");
    app.add_flag("--broadcast", config.broadcast, "Answer broadcast discovery too");
    app.add_option("--transport-latency", group.latency, "Milliseconds from each request to its answer");
    app.add_option("--fault", group.faults, kFaults)->expected(1)->take_all();
}

const char kNoUsb[] =
    "A USB3 Vision camera cannot be emulated for other programs: they would find it only on a USB of their "
    "own, under umockdev.\nThe project's tests have one (tests/support/UsbStage); --link and --socket are "
    "the "
    "places of cameras without a network.\n";

bool asksForUsb(const std::vector<std::string>& arguments)
{
    for (size_t i = 0; i < arguments.size(); ++i)
        if (arguments[i] == "--transport=usb3" ||
            (arguments[i] == "usb3" && i > 0 && arguments[i - 1] == "--transport"))
            return true;
    return false;
}

bool beginsCamera(const std::string& argument)
{
    const std::string option = argument.substr(0, argument.find('='));
    return option == "--address" || option == "--link" || option == "--socket";
}

void checkPlace(const Group& group)
{
    // Option, what was given, and what a camera there speaks.
    const std::tuple<const char*, const std::string&, const char*> places[] = {
        {"--address", group.camera.config.address, "gige"},
        {"--link", group.camera.serial.link, "serial"},
        {"--socket", group.camera.grabber.socket, "gentl"}};
    std::string given;
    for (const auto& [option, place, transport] : places) {
        if (place.empty())
            continue;
        if (!given.empty())
            throw CLI::ValidationError(option, "A camera has one place: " + given + " or " + option + ".");
        given = option;
        if (!group.transport.empty() && group.transport != transport)
            throw CLI::ValidationError("--transport",
                                       "A camera with " + given + " does not speak " + group.transport + ".");
    }
    if (given.empty())
        throw CLI::ValidationError("--address",
                                   "A camera has a place: an --address, a --link or a --socket.");
}

// CLI11 takes arguments from the back of the list.
void parse(CLI::App& app, std::vector<std::string> arguments)
{
    std::reverse(arguments.begin(), arguments.end());
    app.parse(arguments);
}

CameraOptions parseCamera(const std::vector<std::string>& arguments, Options& options)
{
    CLI::App app;
    Group group;
    addCameraOptions(app, group);
    addCommonOptions(app, options);
    parse(app, arguments);

    checkPlace(group);
    CameraOptions& camera = group.camera;
    camera.config.latency = std::chrono::milliseconds(group.latency);
    camera.config.restartTime = std::chrono::milliseconds(group.restartTime);
    if (!group.seedFile.empty()) {
        const auto seed = readFile(group.seedFile);
        if (!seed)
            throw CLI::ValidationError("--seed", "The seed file " + group.seedFile + " cannot be read.");
        camera.config.seed = *seed;
    }
    for (const std::string& fault : group.faults) {
        const std::string problem = parseFault(fault, camera);
        if (!problem.empty())
            throw CLI::ValidationError("--fault", problem);
    }
    return camera;
}

std::string helpText()
{
    Options options;
    Group group;
    CLI::App app("Emulates cameras for tests and demonstrations: GigE Vision on UDP port 3956 of local "
                 "addresses, GenCP\n"
                 "behind pseudo terminals, GenTL behind camera_emulator_gentl.cti. Several cameras: repeat "
                 "the camera's options, each group "
                 "beginning with the\n"
                 "camera's place, --address, --link or --socket.",
                 "camera_emulator");
    addCameraOptions(app, group);
    addCommonOptions(app, options);
    return app.help();
}

} // namespace

ParsedOptions parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    if (asksForUsb(arguments))
        return {std::nullopt, kNoUsb, false};
    try {
        auto begin = std::find_if(arguments.begin(), arguments.end(), beginsCamera);
        CLI::App common;
        addCommonOptions(common, options);
        parse(common, {arguments.begin(), begin});
        while (begin != arguments.end()) {
            const auto end = std::find_if(begin + 1, arguments.end(), beginsCamera);
            options.cameras.push_back(parseCamera({begin, end}, options));
            begin = end;
        }
    } catch (const CLI::CallForHelp&) {
        return {std::nullopt, helpText(), true};
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, std::string(error.what()) + "\n", false};
    }
    if (options.cameras.empty())
        return {std::nullopt, "No camera: give at least one --address, --link or --socket.\n", false};
    return {options, {}, false};
}

} // namespace emu
