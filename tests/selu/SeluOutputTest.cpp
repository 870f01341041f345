// Outputs appear whole or not at all: full disks, signals, devices, links, permissions.
#include "support/SeluRun.h"

#include <base/AtomicFile.h>
#include <base/Errors.h>
#include <base/FileLock.h>
#include <images/ImageFile.h>

#include <array>
#include <chrono>
#include <thread>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class SeluOutput : public test::CSeluTest {
protected:
  static Arguments Synth(std::string const& output, std::string const& size = "16,16,16") {
    return {"synth", "noise", "--size", size, "--seed", "1", "-o", output};
  }
};

TEST_F(SeluOutput, FullDiskLeavesNothing) {
  // A limit on the size of files stands for the disk: the writers see the same failure.
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif"}) {
    auto const result = Selu(Synth("a." + ending, "64,64,64"), {.fileLimit = 50000});
    EXPECT_EQ(result.code, 1) << ending;
    EXPECT_TRUE(result.error.starts_with("selu: cannot write \"a." + ending)) << result.error;
    EXPECT_TRUE(Files().empty()) << ending << testing::PrintToString(Files());
  }
}

TEST_F(SeluOutput, FullDiskLeavesNoHalfOfAFlatImage) {
  auto const result = Selu(Synth("a.png", "300,300"), {.fileLimit = 50000});
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.error, "selu: cannot write \"a.png\": File too large\n");
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluOutput, FullDiskKeepsTheOldFile) {
  Write("a.nrrd", "old");
  EXPECT_EQ(Selu(Synth("a.nrrd"), {.fileLimit = 1000}).code, 1);
  EXPECT_EQ(Read("a.nrrd"), "old");
  EXPECT_EQ(Files(), Arguments{"a.nrrd"});
}

TEST_F(SeluOutput, FullPictureLeavesNothingNotEvenTheMatrix) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  auto const result = Selu(
      {"texture", "a.nrrd", "--direction", "1,0,0", "--matrix", "m.nii.gz", "--picture", "p.svg"},
      {.fileLimit = 40000}); // the packed matrix fits, the picture does not
  EXPECT_EQ(result.code, 1) << result.error;
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(Files(), Arguments{"a.nrrd"});
}

TEST_F(SeluOutput, DevicesGetTheFinishedBytes) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  fs::create_symlink("/dev/full", Folder() / "full.nrrd");
  fs::create_symlink("/dev/full", Folder() / "full.png");
  fs::create_symlink("/dev/null", Folder() / "null.nrrd");
  ExpectFailure(Synth("full.nrrd"), "\"full.nrrd\": No space left on device");
  ExpectFailure({"texture", "a.nrrd", "--picture", "full.png"}, "No space left on device");
  ExpectFailure({"texture", "a.nrrd", "--matrix", "full.nrrd"}, "No space left on device");
  EXPECT_EQ(Selu(Synth("null.nrrd")).code, 0);
  EXPECT_TRUE(fs::is_symlink(Folder() / "full.nrrd")) << "the link was replaced";
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
  EXPECT_EQ(Files(), (Arguments{"a.nrrd", "full.nrrd", "full.png", "null.nrrd"}));
}

TEST_F(SeluOutput, PipesThatNobodyReadsAreRefused) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  ::mkfifo(Path("p.svg").c_str(), 0600);
  auto const result = test::RunProcess(
      {"/usr/bin/env", "timeout", "60", SELU_BINARY, "texture", "a.nrrd", "--picture", "p.svg"},
      {.folder = Folder().string()});
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.error, "selu: cannot write \"p.svg\": nobody reads from it\n");
  EXPECT_EQ(Files(), (Arguments{"a.nrrd", "p.svg"}));
}

TEST_F(SeluOutput, PipesGetTheFinishedBytes) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  ::mkfifo(Path("p.svg").c_str(), 0600);
  int const pipe = ::open(Path("p.svg").c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(pipe, 0);
  std::string bytes;
  std::thread reader([&] { // the picture is larger than what a pipe holds
    std::array<char, 4096> buffer;
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!bytes.ends_with("</svg>\n") && std::chrono::steady_clock::now() < end) {
      ssize_t const count = ::read(pipe, buffer.data(), buffer.size());
      if (count > 0)
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
      else
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ::close(pipe);
  });
  EXPECT_EQ(Selu({"texture", "a.nrrd", "--picture", "p.svg"}).code, 0);
  reader.join();
  ASSERT_EQ(Selu({"texture", "a.nrrd", "--picture", "q.svg"}).code, 0);
  EXPECT_TRUE(bytes == Read("q.svg")) << bytes.size();
}

TEST_F(SeluOutput, LinksToFilesAreFollowed) {
  fs::create_directory(Folder() / "there");
  Write("there/real.nrrd", "old");
  fs::create_symlink("there/real.nrrd", Folder() / "link.nrrd");
  fs::create_symlink("there/new.nrrd", Folder() / "dangling.nrrd");
  ASSERT_EQ(Selu(Synth("link.nrrd")).code, 0);
  ASSERT_EQ(Selu(Synth("dangling.nrrd")).code, 0);
  EXPECT_TRUE(fs::is_symlink(Folder() / "link.nrrd"));
  EXPECT_TRUE(Read("there/real.nrrd").starts_with("NRRD"));
  EXPECT_EQ(Read("there/new.nrrd"), Read("there/real.nrrd"));
}

TEST_F(SeluOutput, ReplacedFilesKeepTheirPermissions) {
  Write("a.nrrd", "old");
  ::chmod(Path("a.nrrd").c_str(), 0640);
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  EXPECT_EQ(fs::status(Path("a.nrrd")).permissions(), static_cast<fs::perms>(0640));
}

TEST_F(SeluOutput, BadTargetsAreRefusedBeforeTheWork) {
  // Work of this size would take seconds and gigabytes.
  auto const start = std::chrono::steady_clock::now();
  std::string const size = "2000,1000,1000";
  fs::create_directory(Folder() / "dir.nrrd");
  ExpectFailure(Synth("a.jpg", size), "the ending must be one of");
  ExpectFailure(Synth("a", size), "the ending must be one of");
  ExpectFailure(Synth("a.mhd", size), "the ending must be one of");
  ExpectFailure(Synth("a.png", size), "PNG holds no volumes");
  ExpectFailure(Synth("nowhere/a.nrrd", size), "there is no folder \"nowhere\"");
  ExpectFailure(Synth("dir.nrrd", size), "Is a directory");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(Files(), Arguments{"dir.nrrd"});
}

TEST_F(SeluOutput, BadTargetsOfTheTextureAreRefusedBeforeTheWork) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  ExpectFailure({"texture", "a.nrrd", "--picture", "p.jpg"}, "a picture ends in .png or .svg");
  ExpectFailure({"texture", "a.nrrd", "--picture", "no/p.png"}, "there is no folder \"no\"");
  ExpectFailure({"texture", "a.nrrd", "--matrix", "m.csv"}, "the ending must be one of");
  ExpectFailure({"texture", "a.nrrd", "--matrix", "m.png"}, "PNG holds no volumes");
  ExpectFailure({"texture", "a.nrrd", "--matrix", "m.nii.gz", "--picture", "no/p.png"},
                "no folder");
  EXPECT_EQ(Files(), Arguments{"a.nrrd"});
}

TEST_F(SeluOutput, InputsAreNotOverwritten) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  ASSERT_EQ(Selu(Synth("a.png", "16,16")).code, 0);
  auto const image = Read("a.nrrd"), picture = Read("a.png");
  std::string const pixels(16 * 16, 'x');
  Write("pixels.nrrd", pixels);
  Write("a.nhdr", "NRRD0004\ntype: uint8\ndimension: 2\nsizes: 16 16\nencoding: raw\n"
                  "data file: pixels.nrrd\n");
  fs::create_symlink("a.nrrd", Folder() / "link.nrrd");
  fs::create_hard_link(Folder() / "a.png", Folder() / "other.png");
  fs::create_directory(Folder() / "there");
  auto const files = Files();
  for (auto const& [input, option, output] :
       std::vector<std::array<std::string, 3>>{{"a.nrrd", "--matrix", "a.nrrd"},
                                               {"a.nrrd", "--matrix", "there/../a.nrrd"},
                                               {"a.nrrd", "--matrix", "link.nrrd"},
                                               {"link.nrrd", "--matrix", "a.nrrd"},
                                               {"a.png", "--picture", "a.png"},
                                               {"a.png", "--picture", "other.png"},
                                               {"a.nhdr", "--matrix", "pixels.nrrd"}})
    ExpectFailure({"texture", input, option, output},
                  "cannot write \"" + output + "\": it is the input");
  EXPECT_EQ(Read("a.nrrd"), image);
  EXPECT_EQ(Read("a.png"), picture);
  EXPECT_EQ(Read("pixels.nrrd"), pixels);
  EXPECT_EQ(Files(), files);
}

TEST_F(SeluOutput, NamesThatAreTakenDoNotBlock) {
  Arguments taken;
  for (int count = 0; count < 20; ++count)
    taken.push_back(".selu-" + std::to_string(::getpid()) + "-" + std::to_string(count) + ".txt");
  for (auto const& name : taken) fs::create_directory(Folder() / name); // no leftovers
  {
    selu::CAtomicFile file(Path("a.txt"));
    EXPECT_EQ(Files().size(), taken.size() + 1);
    file.Write("new");
    file.Commit();
  }
  EXPECT_EQ(Read("a.txt"), "new");
  EXPECT_EQ(Files().size(), taken.size() + 1) << "the folders and the file";
}

TEST_F(SeluOutput, TemporariesOfKilledProcessesVanishWithTheNextOutput) {
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif"}) {
    Write(".selu-4194999-0." + ending, "half");
    ASSERT_EQ(Selu(Synth("a." + ending)).code, 0);
    EXPECT_EQ(Files(), Arguments{"a." + ending});
    fs::remove(Folder() / ("a." + ending));
  }
}

TEST_F(SeluOutput, OnlyLeftoversAreRemoved) {
  Arguments others = {".selu",         ".selu-1",      ".selu-1-",   ".selu--1",     ".selu-a-1",
                      ".selu-1-b.tif", "selu-1-1.tif", ".selu-1-1x", ".Selu-1-1.tif"};
  std::sort(others.begin(), others.end());
  for (auto const& name : others) Write(name, "mine");
  fs::create_directory(Folder() / ".selu-1-2.tif");
  fs::create_symlink("b.tif", Folder() / ".selu-1-3.tif");
  ::mkfifo(Path(".selu-1-4.tif").c_str(), 0600);
  Write(".selu-1-5.tif", "left");
  selu::RemoveLeftovers(Folder());
  for (auto const name : {".selu-1-2.tif", ".selu-1-3.tif", ".selu-1-4.tif"})
    others.push_back(name);
  std::sort(others.begin(), others.end());
  EXPECT_EQ(Files(), others);
}

TEST_F(SeluOutput, TemporariesOfLivingProcessesStay) {
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif"}) {
    selu::CAtomicFile file(Path("a." + ending));
    ORVA::CImage image(ORVA::IMAGE_GREY_8, ORVA::CSize(4, 3, 2));
    for (bool const isWritten : {false, true}) {
      if (isWritten) selu::WriteImage(file, image);
      ASSERT_EQ(Selu(Synth("b.nrrd")).code, 0);
      EXPECT_TRUE(fs::exists(file.Temporary())) << ending << isWritten;
    }
    file.Commit();
    EXPECT_EQ(Files(), (Arguments{"a." + ending, "b.nrrd"}));
    fs::remove(Folder() / ("a." + ending));
  }
}

TEST_F(SeluOutput, LockedFilesAreNoLeftovers) {
  Write(".selu-1-1.txt", "mine");
  {
    selu::CFileLock const lock(Folder() / ".selu-1-1.txt");
    EXPECT_TRUE(lock.Holds(Folder() / ".selu-1-1.txt"));
    ASSERT_EQ(Selu(Synth("b.nrrd")).code, 0);
    EXPECT_EQ(Files(), (Arguments{".selu-1-1.txt", "b.nrrd"}));
    Write("other", "");
    fs::rename(Folder() / "other", Folder() / ".selu-1-1.txt");
    EXPECT_FALSE(lock.Holds(Folder() / ".selu-1-1.txt")) << "another file has taken the name";
  }
  ASSERT_EQ(Selu(Synth("b.nrrd")).code, 0);
  EXPECT_EQ(Files(), Arguments{"b.nrrd"});
  EXPECT_FALSE(selu::CFileLock(Folder() / "missing").Holds(Folder() / "missing"));
  EXPECT_FALSE(selu::CFileLock().Holds(Folder() / "b.nrrd"));
}

TEST_F(SeluOutput, WriteProtectedTargetsAreRefused) {
  Write("a.nrrd", "old");
  fs::create_directory(Folder() / "locked");
  ::chmod(Path("a.nrrd").c_str(), 0444);
  ::chmod(Path("locked").c_str(), 0555);
  ExpectFailure(Synth("a.nrrd"), "Permission denied", 1, {.obeysPermissions = true});
  ExpectFailure(Synth("locked/a.nrrd"), "Permission denied", 1, {.obeysPermissions = true});
  EXPECT_EQ(Read("a.nrrd"), "old");
  EXPECT_EQ(Files(), (Arguments{"a.nrrd", "locked"}));
}

TEST_F(SeluOutput, OpenFilesAreWrittenIntoNotReplaced) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 1}, {1, 1, 2, 2});
  auto const run = [&](std::string const& command) {
    return test::RunProcess({"/bin/bash", "-c", command, SELU_BINARY},
                            {.folder = Folder().string()});
  };
  ASSERT_EQ(run("\"$0\" regions l.nrrd -o f.json").code, 0);
  auto const json = Read("f.json");
  Write("log", "first line\n");
  fs::create_symlink("/dev/stdout", Folder() / "link");
  std::string expected = "first line\n";
  for (std::string const target : {"/dev/stdout", "-", "/dev/fd/1", "/proc/self/fd/1", "link"}) {
    auto const result = run("\"$0\" regions l.nrrd -o " + target + " >> log");
    EXPECT_EQ(result.code, 0) << target << result.error;
    expected += json;
    EXPECT_EQ(Read("log"), expected) << target;
  }
  EXPECT_EQ(run("\"$0\" regions l.nrrd -o /dev/fd/7 7>> log").code, 0);
  EXPECT_EQ(Read("log"), expected + json);
  EXPECT_EQ(run("\"$0\" regions l.nrrd -o - | cat").out, json);
  EXPECT_NE(run("\"$0\" regions l.nrrd -o - >&-").code, 0);
  EXPECT_EQ(Files(), (Arguments{"f.json", "l.nrrd", "link", "log"}));
}

TEST_F(SeluOutput, ADashIsStandardOutputInEveryCommand) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  EXPECT_EQ(Output(Synth("-")), Read("a.nrrd"));
  EXPECT_EQ(Output({"synth", "fibers", "--size", "9,9,9", "--count", "2", "--seed", "1", "-o", "-"})
                .substr(0, 4),
            "NRRD");
  EXPECT_EQ(Output({"mask", "a.nrrd", "--axis", "Z", "--center", "3,3", "--radius", "3", "--value",
                    "0", "-o", "-"})
                .substr(0, 4),
            "NRRD");
  EXPECT_EQ(Output({"walk", "line", "0,0", "1,0", "-o", "-"}), "x,y\n0,0\n1,0\n");
  EXPECT_EQ(
      Output({"walk", "line", "0,0,0", "1,0,0", "--image", "a.nrrd", "--paint", "3", "-o", "-"})
          .substr(0, 4),
      "NRRD");
  ASSERT_EQ(Selu({"regions", "a.nrrd", "-o", "f.json"}).code, 0);
  EXPECT_EQ(Output({"regions", "a.nrrd", "-o", "-"}), Read("f.json"));
  EXPECT_EQ(Output({"feature-image", "f.json", "-o", "-"}).substr(0, 4), "NRRD");
  EXPECT_TRUE(Output({"feature-image", "f.json", "--csv", "-"}).starts_with("object,"));
  EXPECT_EQ(Output({"sample", "normal", "-n", "3", "--seed", "1", "-o", "-"}),
            Output({"sample", "normal", "-n", "3", "--seed", "1"}));
  ExpectFailure({"feature-image", "f.json", "-o", "-", "--csv", "/dev/stdout"}, "the same file", 2);
}

TEST_F(SeluOutput, AllOutputsAppearOrNone) {
  ASSERT_EQ(Selu(Synth("a.nrrd")).code, 0);
  ASSERT_EQ(Selu({"regions", "a.nrrd", "-o", "f.json"}).code, 0);
  auto const files = Files();
  ExpectFailure({"feature-image", "f.json", "-o", "x.nrrd", "--csv", "/dev/full"}, "No space left");
  ExpectFailure({"regions", "a.nrrd", "-o", "x.json", "--csv", "/dev/full"}, "No space left");
  ExpectFailure({"texture", "a.nrrd", "--matrix", "x.nrrd", "--picture", "x.svg"},
                "standard output", 1, {.outFile = "/dev/full"});
  EXPECT_EQ(Files(), files);
}

TEST_F(SeluOutput, FilesThatCannotTakeTheirNameGiveTheOthersBack) {
  Write("a.txt", "old");
  selu::CAtomicFile a(Path("a.txt")), b(Path("b.txt")), c(Path("c.txt"));
  for (auto* const file : {&a, &b, &c}) file->Write("new");
  fs::create_directory(Folder() / "c.txt"); // stands in the way since a moment ago
  EXPECT_THROW(selu::CommitAll({&a, nullptr, &b, &c}), selu::CAppError);
  EXPECT_EQ(Read("a.txt"), "old");
  EXPECT_FALSE(fs::exists(Path("b.txt")));
  fs::remove(Folder() / "c.txt");
  selu::CAtomicFile d(Path("a.txt"));
  d.Write("new");
  selu::CommitAll({&d});
  EXPECT_EQ(Read("a.txt"), "new");
}

TEST_F(SeluOutput, SignalsLeaveNothing) {
  struct StCase {
    int signal, code;
  };
  for (auto const [signal, code] : {StCase{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}}) {
    // Some seconds of work: the signal comes in its midst.
    auto const result =
        Selu({"synth", "blobs", "--size", "500,500,300", "--seed", "1", "-o", "a.nrrd"},
             {.interruptAfter = 0.4, .signal = signal});
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.error, signal == SIGINT ? "selu: interrupted\n" : "");
    EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
  }
}

} // namespace
