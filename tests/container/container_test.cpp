#include "container/container.h"

#include "core/error_trap.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <set>

namespace qarvel::container {
namespace {

namespace fs = std::filesystem;
using Bytes = std::string;

Bytes ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

void WriteAll(const fs::path& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

// A pattern that differs from block to block, so a misplaced block shows.
Bytes Pattern(std::size_t size, unsigned seed) {
    Bytes bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>((i * 131 + seed * 7 + i / 251) & 0xFF);
    return bytes;
}

// One directory entry of the uncompressed layout.
Bytes DirEntry(const Bytes& name, std::int64_t size) {
    auto raw = static_cast<std::uint32_t>(size);
    Bytes entry(1, static_cast<char>(name.size()));
    entry += name;
    for (int shift = 0; shift < 32; shift += 8) entry += static_cast<char>((raw >> shift) & 0xFF);
    return entry;
}

Bytes Compress2(const Bytes& raw) {
    uLongf length = compressBound(static_cast<uLong>(raw.size()));
    Bytes packed(length, '\0');
    EXPECT_EQ(compress2(reinterpret_cast<Bytef*>(packed.data()), &length,
                        reinterpret_cast<const Bytef*>(raw.data()), static_cast<uLong>(raw.size()), 9),
              Z_OK);
    packed.resize(length);
    return packed;
}

// Inflates a whole container with zlib's one-shot uncompress().
Bytes Uncompress(const Bytes& packed, std::size_t expectedSize) {
    uLongf length = static_cast<uLongf>(expectedSize + 1);
    Bytes raw(length, '\0');
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(raw.data()), &length,
                         reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size())),
              Z_OK);
    raw.resize(length);
    return raw;
}

std::set<fs::path> Tree(const fs::path& root) {
    std::set<fs::path> paths;
    for (const auto& item : fs::recursive_directory_iterator(root)) paths.insert(fs::relative(item.path(), root));
    return paths;
}

// Every test gets a private root; the temporary folder is pointed inside it so
// that scratch files left behind show up too.
class ContainerTest : public ::testing::Test {
protected:
    void SetUp() override {
        m_root = qarvel::testing_support::FreshTestFolder();
        fs::create_directories(m_root / "in");
        fs::create_directories(m_root / "tmp");
        fs::create_directories(m_root / "deep/a/b/out");
        const char* old = std::getenv("TMPDIR");
        m_oldTmp = old ? old : "";
        m_hadTmp = old != nullptr;
        setenv("TMPDIR", (m_root / "tmp").c_str(), 1);
    }
    void TearDown() override {
        if (m_hadTmp) setenv("TMPDIR", m_oldTmp.c_str(), 1);
        else unsetenv("TMPDIR");
        fs::remove_all(m_root);
    }
    fs::path In(const std::string& name, const Bytes& bytes) {
        WriteAll(m_root / "in" / name, bytes);
        return m_root / "in" / name;
    }
    fs::path Out() const { return m_root / "deep/a/b/out"; }
    fs::path Container(const Bytes& packed) {
        WriteAll(m_root / "hostile.fmj", packed);
        return m_root / "hostile.fmj";
    }
    // Nothing but the input files, the container, an empty scratch area and
    // the (possibly filled) output folder.
    void ExpectOnlyOutput(const std::set<fs::path>& outputNames) {
        std::set<fs::path> expected = {"in", "tmp", "deep", "deep/a", "deep/a/b", "deep/a/b/out"};
        for (const auto& item : fs::directory_iterator(m_root / "in")) expected.insert("in" / item.path().filename());
        if (fs::exists(m_root / "hostile.fmj")) expected.insert("hostile.fmj");
        if (fs::exists(m_root / "packed.fmj")) expected.insert("packed.fmj");
        for (const fs::path& name : outputNames) expected.insert("deep/a/b/out" / name);
        EXPECT_EQ(Tree(m_root), expected);
    }

    fs::path m_root;
    std::string m_oldTmp;
    bool m_hadTmp = false;
};

TEST_F(ContainerTest, EmptyListPacksTheSingleZeroByteAndUnpacksToNothing) {
    fs::path packed = m_root / "packed.fmj";
    std::string status;
    ASSERT_TRUE(CompressFiles(packed, {}, &status));
    EXPECT_EQ(status, "Success");
    EXPECT_EQ(Uncompress(ReadAll(packed), 1), Bytes(1, '\0'));
    ASSERT_TRUE(UncompressFiles(packed, Out(), &status));
    EXPECT_EQ(status, "Success");
    ExpectOnlyOutput({});
}

struct RoundTripCase {
    const char* label;
    std::vector<std::size_t> sizes;
};
void PrintTo(const RoundTripCase& c, std::ostream* os) { *os << c.label; }


class RoundTrip : public ContainerTest, public ::testing::WithParamInterface<RoundTripCase> {};

// Sizes round the copy block of 32767 bytes: one block, one block and one
// byte, an empty file, and several files together.
TEST_P(RoundTrip, FilesComeBackByteIdenticalAndInflateToTheLayout) {
    const std::vector<std::string> names = {"JOB.tdb", "JOB.mco", "JOB.mst", "extra.bin"};
    std::vector<fs::path> sources;
    Bytes layout;
    Bytes contents;
    for (std::size_t i = 0; i < GetParam().sizes.size(); ++i) {
        Bytes bytes = Pattern(GetParam().sizes[i], static_cast<unsigned>(i));
        sources.push_back(In(names[i], bytes));
        layout += DirEntry(names[i], static_cast<std::int64_t>(bytes.size()));
        contents += bytes;
    }
    layout += '\0' + contents;

    fs::path packed = m_root / "packed.fmj";
    ASSERT_TRUE(CompressFiles(packed, sources));
    EXPECT_EQ(Uncompress(ReadAll(packed), layout.size()), layout);
    ASSERT_TRUE(UncompressFiles(packed, Out()));
    std::set<fs::path> outputs;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        EXPECT_EQ(ReadAll(Out() / names[i]), ReadAll(sources[i])) << names[i];
        outputs.insert(names[i]);
    }
    ExpectOnlyOutput(outputs);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, RoundTrip,
    ::testing::Values(RoundTripCase{"EmptyFile", {0}}, RoundTripCase{"OneByte", {1}},
                      RoundTripCase{"ExactlyOneBlock", {32767}}, RoundTripCase{"OneBlockAndOneByte", {32768}},
                      RoundTripCase{"JobOfThreeFiles", {100000, 0, 32768}},
                      RoundTripCase{"FourFilesAcrossBlocks", {65534, 65535, 1, 70000}}),
    [](const auto& c) { return std::string(c.param.label); });

TEST_F(ContainerTest, ContainerWrittenByCompress2Unpacks) {
    Bytes raw = DirEntry("a.tdb", 5) + DirEntry("b.mst", 0) + DirEntry("c.mco", 3) + '\0' + "hello" + "xyz";
    ASSERT_TRUE(UncompressFiles(Container(Compress2(raw)), Out()));
    EXPECT_EQ(ReadAll(Out() / "a.tdb"), "hello");
    EXPECT_EQ(ReadAll(Out() / "b.mst"), "");
    EXPECT_EQ(ReadAll(Out() / "c.mco"), "xyz");
    ExpectOnlyOutput({"a.tdb", "b.mst", "c.mco"});
}

// A declared 8 MB file of zeros packs to a few kilobytes: bounded by the
// limit, refused while inflating, nothing left behind.
TEST_F(ContainerTest, InflatingBeyondTheLimitIsRefused) {
    const Bytes raw = DirEntry("big.tdb", 8 << 20) + '\0' + Bytes(8 << 20, '\0');
    const fs::path packed = Container(Compress2(raw));
    std::string status;
    EXPECT_FALSE(UncompressFiles(packed, Out(), &status, 1 << 20));
    EXPECT_NE(status.find("inflates beyond 1048576 bytes"), std::string::npos) << status;
    ExpectOnlyOutput({});
    EXPECT_TRUE(UncompressFiles(packed, Out()));  // the default limit serves real files of this size
}

TEST_F(ContainerTest, NamesAreStoredInCodePage1252) {
    // "Café €.tdb" in UTF-8 on disk; é is 0xE9 and € is 0x80 in the code page.
    fs::path source = In("Caf\xC3\xA9 \xE2\x82\xAC.tdb", "x");
    fs::path packed = m_root / "packed.fmj";
    ASSERT_TRUE(CompressFiles(packed, {source}));
    EXPECT_EQ(Uncompress(ReadAll(packed), 20), DirEntry("Caf\xE9 \x80.tdb", 1) + '\0' + "x");
    ASSERT_TRUE(UncompressFiles(packed, Out()));
    EXPECT_EQ(ReadAll(Out() / "Caf\xC3\xA9 \xE2\x82\xAC.tdb"), "x");
}

TEST_F(ContainerTest, UnpackingReplacesAnEarlierFileOfTheSameName) {
    WriteAll(Out() / "a.tdb", "old contents");
    Bytes raw = DirEntry("a.tdb", 3) + '\0' + "new";
    ASSERT_TRUE(UncompressFiles(Container(Compress2(raw)), Out()));
    EXPECT_EQ(ReadAll(Out() / "a.tdb"), "new");
}

struct PackRefusal {
    const char* label;
    std::string fileName;  // UTF-8 on disk
    const char* reason;
};
void PrintTo(const PackRefusal& c, std::ostream* os) { *os << c.label; }


class PackRefused : public ContainerTest, public ::testing::WithParamInterface<PackRefusal> {};

// A name the container cannot carry, or that unpacking would refuse, fails at
// packing time and leaves the previous container as it was.
TEST_P(PackRefused, KeepsThePreviousContainer) {
    fs::path packed = m_root / "packed.fmj";
    WriteAll(packed, "previous");
    fs::path source = In(GetParam().fileName, "data");
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    std::string status;
    EXPECT_FALSE(CompressFiles(packed, {source}, &status));
    EXPECT_NE(status.find(GetParam().reason), std::string::npos) << status;
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].module, "modFileComp");
    EXPECT_EQ(sink.Reports()[0].routine, ":CompressFiles:");
    EXPECT_EQ(ReadAll(packed), "previous");
    ExpectOnlyOutput({});
}

INSTANTIATE_TEST_SUITE_P(
    Names, PackRefused,
    ::testing::Values(PackRefusal{"OutsideCodePage", "\xE6\x97\xA5.tdb", "code page 1252"},
                      PackRefusal{"DotDot", "a..tdb", "\"..\""},
                      PackRefusal{"DeviceName", "con.tdb", "reserved device name"}),
    [](const auto& c) { return std::string(c.param.label); });

TEST(ContainerNames, LongestNameIs255Bytes) {
    EXPECT_EQ(ContainerNameProblem(std::string(255, 'n')), "");
    EXPECT_EQ(ContainerNameProblem(std::string(256, 'n')), "file name longer than 255 characters");
}

TEST_F(ContainerTest, NameOf255BytesRoundTrips) {
    fs::path source = In(std::string(251, 'n') + ".tdb", "data");
    fs::path packed = m_root / "packed.fmj";
    ASSERT_TRUE(CompressFiles(packed, {source}));
    ASSERT_TRUE(UncompressFiles(packed, Out()));
    EXPECT_EQ(ReadAll(Out() / source.filename()), "data");
}

TEST_F(ContainerTest, MissingSourceIsAFileErrorAndWritesNothing) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    std::string status;
    EXPECT_FALSE(CompressFiles(m_root / "packed.fmj", {In("a.tdb", "x"), m_root / "in/missing.tdb"}, &status));
    EXPECT_NE(status.find("missing.tdb"), std::string::npos) << status;
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].Text().rfind("modFileComp:CompressFiles: ", 0), 0u);
    EXPECT_FALSE(fs::exists(m_root / "packed.fmj"));
    ExpectOnlyOutput({});
}

TEST_F(ContainerTest, TwoSourcesWithTheSameBareNameAreRefused) {
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    fs::create_directories(m_root / "in/sub");
    WriteAll(m_root / "in/sub/A.TDB", "2");
    EXPECT_FALSE(CompressFiles(m_root / "packed.fmj", {In("a.tdb", "1"), m_root / "in/sub/A.TDB"}));
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].description, "file name appears twice: \"A.TDB\"");
}

struct Hostile {
    const char* label;
    Bytes packed;  // the container file's bytes
    const char* reason;
};
void PrintTo(const Hostile& c, std::ostream* os) { *os << c.label; }


Bytes Layout(const Bytes& name, std::int64_t size, const Bytes& contents) {
    return Compress2(DirEntry(name, size) + '\0' + contents);
}

class HostileContainer : public ContainerTest, public ::testing::WithParamInterface<Hostile> {};

// Containers arrive by e-mail: each of these must be refused with a clear
// reason, write nothing anywhere, and leave the folder as it was.
TEST_P(HostileContainer, IsRefusedAndWritesNothing) {
    WriteAll(Out() / "keep.tdb", "untouched");
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    std::string status;
    EXPECT_FALSE(UncompressFiles(Container(GetParam().packed), Out(), &status));
    EXPECT_NE(status.find(GetParam().reason), std::string::npos) << status;
    ASSERT_EQ(sink.Reports().size(), 1u);
    EXPECT_EQ(sink.Reports()[0].module, "modFileComp");
    EXPECT_EQ(sink.Reports()[0].routine, ":UncompressFiles:");
    EXPECT_EQ(ReadAll(Out() / "keep.tdb"), "untouched");
    ExpectOnlyOutput({"keep.tdb"});
}

Bytes GoodThenBad(const Bytes& badName) {
    return Compress2(DirEntry("good.tdb", 4) + DirEntry(badName, 1) + '\0' + "goodX");
}

Bytes Truncated() {
    Bytes packed = Layout("a.tdb", 40000, Pattern(40000, 1));
    return packed.substr(0, packed.size() / 2);
}

INSTANTIATE_TEST_SUITE_P(
    Refusals, HostileContainer,
    ::testing::Values(
        Hostile{"ParentFolder", Layout("../x", 1, "x"), "\"..\""},
        Hostile{"ParentAfterGoodFile", GoodThenBad(".."), "\"..\""},
        Hostile{"AbsolutePath", Layout("/etc/x", 1, "x"), "folder separator"},
        Hostile{"Backslash", Layout("a\\b", 1, "x"), "folder separator"},
        Hostile{"DrivePrefix", Layout("C:x", 1, "x"), "drive prefix"},
        Hostile{"EmptyNameIsTheDirectoryEnd", Compress2(Bytes("\0\x01\0\0\0x", 6)), "after its last file"},
        Hostile{"ControlCharacter", Layout(Bytes("a\nb"), 1, "x"), "control character"},
        Hostile{"UndefinedCodePageByte", Layout("a\x81", 1, "x"), "code page 1252"},
        Hostile{"DuplicateName", Compress2(DirEntry("a.tdb", 1) + DirEntry("A.TDB", 1) + '\0' + "xy"),
                "appears twice"},
        Hostile{"SizeBeyondData", Layout("a.tdb", 10, "short"), "overrun"},
        Hostile{"SizesBeyondDataTogether", Compress2(DirEntry("a", 3) + DirEntry("b", 3) + '\0' + "abcde"),
                "overrun"},
        Hostile{"NegativeSize", Layout("a.tdb", -1, "x"), "negative"},
        Hostile{"SmallestNegativeSize", Layout("a.tdb", INT32_MIN, "x"), "negative"},
        Hostile{"DataAfterLastFile", Layout("a.tdb", 1, "xy"), "after its last file"},
        Hostile{"DirectoryWithoutEnd", Compress2(DirEntry("a.tdb", 0)), "runs past the end"},
        Hostile{"NameRunsPastEnd", Compress2(Bytes("\x09" "abc", 4)), "runs past the end"},
        Hostile{"NothingInside", Compress2(""), "runs past the end"},
        Hostile{"TruncatedStream", Truncated(), "truncated"},
        Hostile{"EmptyFile", "", "truncated"},
        Hostile{"TrailingGarbage", Layout("a.tdb", 1, "x") + "garbage", "data after its end"},
        Hostile{"SecondStreamAppended", Layout("a.tdb", 1, "x") + Layout("b.tdb", 1, "y"), "data after its end"},
        Hostile{"NotZlibAtAll", "PK\x03\x04 this is a zip header, not zlib", "damaged"},
        Hostile{"CorruptedChecksum",
                [] {
                    Bytes p = Layout("a.tdb", 5, "hello");
                    p.back() = static_cast<char>(p.back() ^ 0x55);
                    return p;
                }(),
                "damaged"}),
    [](const auto& c) { return std::string(c.param.label); });

TEST_F(ContainerTest, MissingContainerOrFolderIsAFileError) {
    std::string status;
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    EXPECT_FALSE(UncompressFiles(m_root / "absent.fmj", Out(), &status));
    EXPECT_NE(status.find("absent.fmj"), std::string::npos) << status;
    EXPECT_FALSE(UncompressFiles(Container(Layout("a", 1, "x")), m_root / "no-such-folder", &status));
    EXPECT_NE(status.find("does not exist"), std::string::npos) << status;
    EXPECT_EQ(sink.Reports().size(), 2u);
    ExpectOnlyOutput({});
}

TEST_F(ContainerTest, AFolderInTheWayRefusesTheWholeContainer) {
    fs::create_directory(Out() / "b.mst");
    Bytes raw = DirEntry("a.tdb", 1) + DirEntry("b.mst", 1) + '\0' + "xy";
    core::RecordingErrorSink sink;
    core::ScopedErrorSink scoped(sink);
    EXPECT_FALSE(UncompressFiles(Container(Compress2(raw)), Out()));
    EXPECT_FALSE(fs::exists(Out() / "a.tdb"));
    EXPECT_TRUE(fs::is_directory(Out() / "b.mst"));
}

struct CodePageCase {
    const char* label;
    std::string utf8;
    std::string cp1252;
};
void PrintTo(const CodePageCase& c, std::ostream* os) { *os << c.label; }


class CodePage : public ::testing::TestWithParam<CodePageCase> {};

TEST_P(CodePage, ConvertsBothWays) {
    EXPECT_EQ(Utf8ToCp1252(GetParam().utf8), GetParam().cp1252);
    EXPECT_EQ(Cp1252ToUtf8(GetParam().cp1252), GetParam().utf8);
}

INSTANTIATE_TEST_SUITE_P(
    Characters, CodePage,
    ::testing::Values(CodePageCase{"Ascii", "JOB 12.tdb", "JOB 12.tdb"},
                      CodePageCase{"Latin1Letters", "\xC3\xA9\xC3\xBF\xC2\xA0", "\xE9\xFF\xA0"},
                      CodePageCase{"EuroAndQuotes", "\xE2\x82\xAC\xE2\x80\x9C\xE2\x80\x9D", "\x80\x93\x94"},
                      CodePageCase{"LastTypographic", "\xC5\xB8", "\x9F"}),
    [](const auto& c) { return std::string(c.param.label); });

TEST(CodePageRefusals, TextsOutsideTheCodePageOrMalformedAreRefused) {
    EXPECT_FALSE(Utf8ToCp1252("\xE6\x97\xA5"));          // CJK ideograph
    EXPECT_FALSE(Utf8ToCp1252("\xC2\x81"));              // U+0081 has no place in the code page
    EXPECT_FALSE(Utf8ToCp1252("\xC3"));                  // cut-off sequence
    EXPECT_FALSE(Utf8ToCp1252("\xC1\xA1"));              // overlong "a"
    EXPECT_FALSE(Utf8ToCp1252("\xED\xA0\x80"));          // surrogate
    EXPECT_FALSE(Cp1252ToUtf8("\x81"));                  // undefined byte
    EXPECT_FALSE(Cp1252ToUtf8("a\x9D"));
}

}  // namespace
}  // namespace qarvel::container
