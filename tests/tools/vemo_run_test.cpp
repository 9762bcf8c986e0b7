// vemo-run's command line, its messages and its exit status.
#include <cstdio>
#include <string>

#include "tool_runner.h"
#include "vemocore.h"

TEST_F(VemoRun, HelpNamesEverySwitchAndSucceeds) {
    const tool_result r = run_tool("--help");
    EXPECT_EQ(r.status, 0);
    for (const char* option : {"GAME", "--program", "--load-address", "--boot-rom", "--eeprom", "--frames",
                               "--audio", "--timer-ticks", "--dsp-always-run", "--png", "--png-dir", "--every"})
        EXPECT_NE(r.output.find(option), std::string::npos) << option;
}

TEST_F(VemoRun, MissingOrUnreadableFilesAreNamedBeforeTheCoreStarts) {
    const fs::path missing = dir / "missing.j64";
    struct {
        std::string arguments, expected;
    } cases[] = {
        {shell_arg(missing), "cannot read cartridge image '" + missing.string() + "': No such file"},
        {"--program " + shell_arg(missing), "cannot read program image '" + missing.string() + "': No such file"},
        {shell_arg(test_pattern) + " --boot-rom " + shell_arg(missing), "cannot read boot ROM image"},
        {shell_arg(dir), "is a directory"},
    };
    for (const auto& c : cases) {
        const tool_result r = run_tool(c.arguments);
        EXPECT_EQ(r.status, 2) << c.arguments;
        EXPECT_NE(r.output.find(c.expected), std::string::npos) << c.arguments << "\n" << r.output;
    }
}

TEST_F(VemoRun, CommandLinesThatMakeNoSenseAreRefused) {
    const std::string image = shell_arg(test_pattern);
    for (const std::string& arguments :
         {std::string(""), image + " --program " + image, "--program " + image + " --load-address 0xZZ",
          "--program " + image + " --load-address 0x123456789", image + " --every 2", image + " --timer-ticks",
          image + " --frames -1"}) {
        const tool_result r = run_tool(arguments);
        EXPECT_EQ(r.status, 2) << arguments << "\n" << r.output;
        EXPECT_EQ(r.output.find("frames run"), std::string::npos) << arguments;
    }
}

TEST_F(VemoRun, ACoreThatDoesNotStartIsReportedInTheCoresWords) {
    // Ask the core directly what it says about a program placed outside RAM.
    vemo_config config{};
    std::snprintf(config.rom_path, sizeof config.rom_path, "%s", test_pattern.c_str());
    config.load_program = 1;
    config.load_address = 0x300000;
    ASSERT_EQ(vemo_init(&config), 0);
    std::string message = vemo_get_error_string();
    vemo_shutdown();
    while (!message.empty() && message.back() == '\n') message.pop_back();
    ASSERT_FALSE(message.empty());

    const tool_result r = run_tool("--program " + shell_arg(test_pattern) + " --load-address 0x300000");
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.output.find("the core did not start: " + message), std::string::npos) << r.output;
}

TEST_F(VemoRun, APictureThatCannotBeWrittenFailsTheRun) {
    const tool_result r =
        run_tool("--program " + shell_arg(test_pattern) + " --frames 1 --png " + shell_arg(dir / "no" / "such" / "p.png"));
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.output.find("cannot write"), std::string::npos) << r.output;
}
