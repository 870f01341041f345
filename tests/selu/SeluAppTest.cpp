// Help, version, usage errors and the standard streams of the application.
#include "support/SeluRun.h"

namespace {

using SeluApp = test::CSeluTest;
using Arguments = std::vector<std::string>;

TEST_F(SeluApp, VersionIsANameAndANumber) {
  EXPECT_TRUE(Output({"--version"}).starts_with("selu 0."));
}

TEST_F(SeluApp, HelpOnEveryLevelHasAnExample) {
  for (Arguments command : std::vector<Arguments>{{},
                                                  {"info"},
                                                  {"texture"},
                                                  {"synth"},
                                                  {"synth", "noise"},
                                                  {"synth", "blobs"},
                                                  {"synth", "layers"}}) {
    command.push_back("--help");
    auto const result = Selu(command);
    EXPECT_EQ(result.code, 0) << testing::PrintToString(command);
    EXPECT_EQ(result.error, "");
    EXPECT_TRUE(result.out.find("Example") != std::string::npos) << result.out;
    EXPECT_TRUE(result.out.find("\n  selu ") != std::string::npos) << result.out;
  }
}

// Every command, those below others included.
std::vector<Arguments> AllCommands() {
  std::vector<Arguments> commands = {{},         {"help"}, {"info"},    {"texture"},
                                     {"sample"}, {"mask"}, {"regions"}, {"feature-image"},
                                     {"synth"},  {"walk"}};
  for (char const* const kind : {"noise", "blobs", "layers", "fibers"})
    commands.push_back({"synth", kind});
  for (char const* const kind :
       {"line", "area", "polygon", "volume", "slice", "window", "delta", "direction"})
    commands.push_back({"walk", kind});
  return commands;
}

TEST_F(SeluApp, HelpPagesFitAndSayWhatOptionsTake) {
  for (Arguments const& command : AllCommands()) {
    SCOPED_TRACE(testing::PrintToString(command));
    Arguments asked = command, helped = command;
    asked.push_back("--help");
    helped.insert(helped.begin(), "help");
    auto const page = Output(asked);
    EXPECT_EQ(Output(helped), page);
    for (auto const& line : test::Lines(page)) EXPECT_LE(line.size(), 100u) << line;
    EXPECT_EQ(page.find("TEXT"), std::string::npos) << page;
    EXPECT_NE(page.find("Exit codes: 0 done, 1 it could not be done, 2"), std::string::npos);
  }
  EXPECT_NE(Output({"help", "texture"}).find("--direction X,Y[,Z]"), std::string::npos);
  EXPECT_NE(Output({"help", "texture"}).find("--range LO,HI"), std::string::npos);
}

TEST_F(SeluApp, WrongUsageIsExitCodeTwoAndOneLine) {
  std::vector<std::pair<Arguments, std::string>> const cases = {
      {{}, "subcommand"},
      {{"dance"}, "dance"},
      {{"info"}, "IMAGE"},
      {{"info", "a.png", "b.png"}, "b.png"},
      {{"info", "a.png", "--color"}, "--color"},
      {{"info", "a.png", "--format", "csv"}, "csv"},
      {{"texture"}, "IMAGE"},
      {{"texture", "a.png", "--format", "xml"}, "xml"},
      {{"texture", "a.png", "--direction", "1"}, "\"1\""},
      {{"texture", "a.png", "--direction", "1,0,0,0"}, "\"1,0,0,0\""},
      {{"texture", "a.png", "--direction", "1,x"}, "\"1,x\""},
      {{"texture", "a.png", "--direction", "1,0.5"}, "\"1,0.5\""},
      {{"texture", "a.png", "--direction", "1,"}, "\"1,\""},
      {{"texture", "a.png", "--direction", "3000000000,0"}, "32 bits"},
      {{"texture", "a.png", "--direction", "0,0,0"}, "other than 0,0,0"},
      {{"texture", "a.png", "--color"}, "(see selu texture --help)"},
      {{"walk", "line", "--color"}, "(see selu walk line --help)"},
      {{"help", "dance"}, "there is no command \"dance\""},
      {{"texture", "a.png", "--range", "5"}, "\"5\""},
      {{"texture", "a.png", "--range", ""}, "--range: the value is empty"},
      {{"texture", "a.png", "--matrix", ""}, "--matrix: the value is empty"},
      {{"texture", "a.png", "--picture", ""}, "--picture: the value is empty"},
      {{"texture", "a.png", "--direction", ""}, "--direction: the value is empty"},
      {{"texture", ""}, "IMAGE: the value is empty"},
      {{"mask", "a.png", "--axis", ""}, "--axis"},
      {{"mask", "a.png", "--value", ""}, "--value: the value is empty"},
      {{"regions", "a.png", "-o", ""}, "--output: the value is empty"},
      {{"regions", "a.png", "--intensity", ""}, "--intensity: the value is empty"},
      {{"feature-image", "a.json", "--csv", ""}, "--csv: the value is empty"},
      {{"feature-image", "a.json", "--id-key", ""}, "--id-key: the value is empty"},
      {{"sample", "", "-n", "1"}, "DISTRIBUTION: the value is empty"},
      {{"sample", "normal", "-n", ""}, "--count: the value is empty"},
      {{"sample", "normal", "-n", "3", "--seed", ""}, "--seed: the value is empty"},
      {{"sample", "normal", "-n", "3", "--picture", ""}, "--picture: the value is empty"},
      {{"synth", "noise", "--size", ""}, "--size: the value is empty"},
      {{"synth", "fibers", "--orientation", ""}, "--orientation: the value is empty"},
      {{"info", "a.png", "--range", ""}, "--range: the value is empty"},
      {{"texture", "a.png", "--range", "5,5"}, "LO below HI"},
      {{"texture", "a.png", "--range", "7,5"}, "LO below HI"},
      {{"texture", "a.png", "--range", "0,inf"}, "finite"},
      {{"texture", "a.png", "--range", "nan,1"}, "finite"},
      {{"texture", "a.png", "--range", "-1e308,1e308"}, "finite"},
      {{"texture", "a.png", "--range", "a,b"}, "\"a,b\""},
      {{"info", "a.png", "--range", "1,2,3"}, "\"1,2,3\""},
      {{"synth"}, "subcommand"},
      {{"synth", "clouds"}, "clouds"},
      {{"synth", "noise", "--size", "4,4", "--seed", "1"}, "output"},
      {{"synth", "noise", "--size", "4,4", "-o", "a.png"}, "seed"},
      {{"synth", "noise", "--size", "4", "--seed", "1", "-o", "a.png"}, "\"4\""},
      {{"synth", "noise", "--size", "4,0", "--seed", "1", "-o", "a.png"}, "\"4,0\""},
      {{"synth", "noise", "--size", "-4,4", "--seed", "1", "-o", "a.png"}, "\"-4,4\""},
      {{"synth", "noise", "--size", "4,4,4,4", "--seed", "1", "-o", "a.png"}, "\"4,4,4,4\""},
      {{"synth", "noise", "--size", "4,99999999999999999999", "--seed", "1", "-o", "a.png"},
       "99999999999999999999"},
      {{"synth", "noise", "--size", "4,4", "--seed", "-1", "-o", "a.png"}, "\"-1\""},
      {{"synth", "noise", "--size", "4,4", "--seed", "1.5", "-o", "a.png"}, "\"1.5\""},
  };
  for (auto const& [arguments, text] : cases) ExpectFailure(arguments, text, 2);
  EXPECT_TRUE(Files().empty());
}

TEST_F(SeluApp, FullStandardOutputIsAnError) {
  Write("image.pgm", "");
  ASSERT_EQ(Selu({"synth", "noise", "--size", "8,8", "--seed", "1", "-o", "n.png"}).code, 0);
  for (Arguments const& command :
       std::vector<Arguments>{{"--help"}, {"--version"}, {"info", "n.png"}, {"texture", "n.png"}})
    ExpectFailure(command, "standard output: No space left on device", 1, {.outFile = "/dev/full"});
}

TEST_F(SeluApp, ClosedStandardStreamsDoNotDisturbTheReading) {
  ASSERT_EQ(Selu({"synth", "noise", "--size", "8,8", "--seed", "1", "-o", "n.png"}).code, 0);
  auto const info = Output({"info", "n.png"});
  auto const with = [&](std::string const& streams) {
    return test::RunProcess(
        {"/bin/sh", "-c", "exec \"$0\" \"$@\" " + streams, SELU_BINARY, "info", "n.png"},
        {.folder = Folder().string()});
  };
  for (std::string const streams : {"<&-", "2>&-", "<&- 2>&-"}) {
    auto const result = with(streams);
    EXPECT_EQ(result.code, 0) << streams << result.error;
    EXPECT_EQ(result.out, info) << streams;
  }
  auto const noOutput = with("<&- >&-");
  EXPECT_EQ(noOutput.code, 1);
  EXPECT_EQ(noOutput.error, "selu: cannot write to standard output: Bad file descriptor\n");
  EXPECT_EQ(with("<&- >&- 2>&-").code, 1);
  auto const synth =
      test::RunProcess({"/bin/sh", "-c", "exec \"$0\" \"$@\" <&- >&- 2>&-", SELU_BINARY, "synth",
                        "noise", "--size", "8,8", "--seed", "1", "-o", "m.png"},
                       {.folder = Folder().string()});
  EXPECT_EQ(synth.code, 0);
  EXPECT_EQ(Read("m.png"), Read("n.png"));
}

TEST_F(SeluApp, NothingOfTheBarWhenPiped) {
  auto const result = Selu({"synth", "blobs", "--size", "64,64,64", "--seed", "1", "-o", "b.nrrd"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out + result.error, "");
  auto const texture = Selu({"texture", "b.nrrd"});
  EXPECT_EQ(texture.code, 0);
  EXPECT_EQ(texture.error, "");
}

TEST_F(SeluApp, BarWithTimeLeftOnATerminal) {
  if (!test::HasTerminals()) GTEST_SKIP() << "no terminal is to be had here";
  // Large enough that it takes several times the 0.1 s after which the bar is drawn again.
  auto const result =
      Selu({"synth", "blobs", "--size", "350,350,350", "--seed", "1", "-o", "b.nrrd"},
           {.terminal = true});
  EXPECT_EQ(result.code, 0);
  EXPECT_TRUE(result.error.find("making blobs [") != std::string::npos) << result.error;
  EXPECT_TRUE(result.error.find(" left") != std::string::npos) << result.error;
  EXPECT_TRUE(result.error.ends_with("\r\033[K")) << "the bar stays: " << result.error;
}

} // namespace
