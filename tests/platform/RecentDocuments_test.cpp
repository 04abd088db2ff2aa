#include "platform/RecentDocuments.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUrl>
#include <optional>

#include "support/ToolsAndFiles.h"

namespace marigold {
namespace {

// Another application's entry, as GTK writes them, plus a web link it bookmarked.
const QByteArray kForeignList = R"(<?xml version="1.0" encoding="UTF-8"?>
<xbel version="1.0" xmlns:bookmark="http://www.freedesktop.org/standards/desktop-bookmarks"
      xmlns:mime="http://www.freedesktop.org/standards/shared-mime-info">
  <bookmark href="file:///home/someone/notes.txt" added="2023-05-01T10:00:00Z"
            modified="2023-05-01T10:00:00Z" visited="2023-05-01T10:00:00Z">
    <info><metadata owner="http://freedesktop.org">
      <mime:mime-type type="text/plain"/>
      <bookmark:groups><bookmark:group>Editors</bookmark:group></bookmark:groups>
      <bookmark:applications>
        <bookmark:application name="Text Editor" exec="&apos;gnome-text-editor %u&apos;"
                              modified="2023-05-01T10:00:00Z" count="7"/>
      </bookmark:applications>
    </metadata></info>
  </bookmark>
</xbel>
)";

class RecentDocumentsTest : public ::testing::Test {
protected:
    QString path(const QString& name) const { return _dir.filePath(name); }

    // A real file, so the MIME type comes from its content as well as its name.
    QString touch(const QString& name, const QByteArray& content = "\x89PNG\r\n\x1a\n") const {
        const QString file = path(name);
        QDir().mkpath(QFileInfo(file).absolutePath());
        test::writeFile(file, content);
        return file;
    }

    QTemporaryDir _dir;
};

// Loads the list the way any other GLib program would.
struct Parsed {
    GBookmarkFile* file = g_bookmark_file_new();
    explicit Parsed(const QString& xbel) {
        EXPECT_TRUE(
            g_bookmark_file_load_from_file(file, QFile::encodeName(xbel).constData(), nullptr));
    }
    ~Parsed() { g_bookmark_file_free(file); }
    QByteArray mime(const QByteArray& uri) const {
        gchar* type = g_bookmark_file_get_mime_type(file, uri.constData(), nullptr);
        QByteArray result(type);
        g_free(type);
        return result;
    }
    struct App {
        QByteArray exec;
        guint count = 0;
    };
    std::optional<App> app(const QByteArray& uri, const char* name) const {
        gchar* exec = nullptr;
        guint count = 0;
        if (!g_bookmark_file_get_application_info(file, uri.constData(), name, &exec, &count,
                                                  nullptr, nullptr)) {
            return std::nullopt;
        }
        App result{exec, count};
        g_free(exec);
        return result;
    }
};

TEST_F(RecentDocumentsTest, OtherApplicationsEntriesSurviveOurWrite) {
    const QString xbel = path("recently-used.xbel");
    test::writeFile(xbel, kForeignList);
    const QString photo = touch("photo.png");
    ASSERT_TRUE(RecentDocuments(xbel).noteNewRecentDocument(photo));

    const QByteArray text = test::readFile(xbel);
    EXPECT_TRUE(text.contains("href=\"file:///home/someone/notes.txt\"")) << text.constData();
    EXPECT_TRUE(text.contains("exec=\"&apos;gnome-text-editor %u&apos;\"")) << text.constData();
    const Parsed list(xbel);
    EXPECT_EQ(g_bookmark_file_get_size(list.file), 2);
    const QByteArray foreign = "file:///home/someone/notes.txt";
    EXPECT_EQ(list.mime(foreign), "text/plain");
    EXPECT_TRUE(g_bookmark_file_has_group(list.file, foreign.constData(), "Editors", nullptr));
    const auto editor = list.app(foreign, "Text Editor");
    ASSERT_TRUE(editor);
    EXPECT_EQ(editor->count, 7u);
    EXPECT_FALSE(list.app(foreign, "Marigold")) << "not ours, not claimed";

    const QByteArray ours = QUrl::fromLocalFile(photo).toEncoded();
    EXPECT_EQ(list.mime(ours), "image/png");
    const auto marigold = list.app(ours, "Marigold");
    ASSERT_TRUE(marigold);
    EXPECT_EQ(marigold->exec, "marigold " + ours) << "the command line, expanded for this file";
    EXPECT_FALSE(list.app(ours, "Text Editor"));

    EXPECT_EQ(RecentDocuments(xbel).recentDocuments(), QStringList{photo})
        << "only our own entries are listed";
}

TEST_F(RecentDocumentsTest, MostRecentlyNotedComesFirstWithoutDuplicates) {
    RecentDocuments recent(path("list.xbel"));
    const QString a = touch("a.png"), b = touch("b.jpg", "\xff\xd8\xff\xe0"), c = touch("c.gif");
    for (const QString& file : {a, b, c}) ASSERT_TRUE(recent.noteNewRecentDocument(file));
    EXPECT_EQ(recent.recentDocuments(), (QStringList{c, b, a}));

    ASSERT_TRUE(recent.noteNewRecentDocument(a));
    EXPECT_EQ(recent.recentDocuments(), (QStringList{a, c, b}));
    const Parsed list(path("list.xbel"));
    EXPECT_EQ(g_bookmark_file_get_size(list.file), 3);
    EXPECT_EQ(list.app(QUrl::fromLocalFile(a).toEncoded(), "Marigold")->count, 2u);
}

TEST_F(RecentDocumentsTest, PathsRoundTripThroughUrisAndAreStoredAbsolute) {
    RecentDocuments recent(path("list.xbel"));
    for (const QString& name :
         {QStringLiteral("with space/my photo.png"), QStringLiteral("ünïcødé/写真 é.png"),
          QStringLiteral("100% #1?&.png"), QStringLiteral("new\nline.png")}) {
        const QString file = touch(name);
        ASSERT_TRUE(recent.noteNewRecentDocument(file)) << name.toStdString();
        ASSERT_FALSE(recent.recentDocuments().isEmpty());
        EXPECT_EQ(recent.recentDocuments().first(), file);
    }
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(_dir.path()));
    touch("here.png");
    const bool noted = recent.noteNewRecentDocument("here.png");
    QDir::setCurrent(before);
    ASSERT_TRUE(noted);
    EXPECT_EQ(recent.recentDocuments().first(), path("here.png"));
}

TEST_F(RecentDocumentsTest, UnreadableListIsLeftAsItIs) {
    const QByteArray truncated = kForeignList.left(kForeignList.size() / 2);
    for (const QByteArray& bytes :
         {QByteArray("not xml at all"), truncated, QByteArray("\x00\x01\xfe\xff garbage", 13),
          QByteArray("<?xml version=\"1.0\"?><html><body/></html>")}) {
        const QString xbel = path("corrupt.xbel");
        test::writeFile(xbel, bytes);
        RecentDocuments recent(xbel);
        EXPECT_FALSE(recent.noteNewRecentDocument(touch("x.png"))) << bytes.constData();
        EXPECT_EQ(test::readFile(xbel), bytes) << "must not be replaced";
        EXPECT_TRUE(recent.recentDocuments().isEmpty());
    }
}

TEST_F(RecentDocumentsTest, MissingOrEmptyListIsCreated) {
    const QString photo = touch("p.png");
    for (const QString& xbel :
         {path("missing.xbel"), path("no/such/dir/recently-used.xbel"), path("empty.xbel")}) {
        if (xbel.endsWith("empty.xbel")) test::writeFile(xbel);
        RecentDocuments recent(xbel);
        EXPECT_TRUE(recent.recentDocuments().isEmpty());
        ASSERT_TRUE(recent.noteNewRecentDocument(photo)) << xbel.toStdString();
        EXPECT_EQ(recent.recentDocuments(), QStringList{photo});
        EXPECT_EQ(Parsed(xbel).mime(QUrl::fromLocalFile(photo).toEncoded()), "image/png");
    }
    EXPECT_FALSE(RecentDocuments(path("missing.xbel")).noteNewRecentDocument({}));
}

TEST_F(RecentDocumentsTest, ListedByOurOwnStampNotByFileOrder) {
    // Hand-written: entries out of order, a web address under our name, equal stamps.
    const QString xbel = path("list.xbel");
    auto entry = [](const char* href, const char* app, const char* stamp) {
        return QByteArray("<bookmark href=\"") + href + "\" added=\"2020-01-01T00:00:00Z\">" +
               "<info><metadata owner=\"http://freedesktop.org\"><bookmark:applications>" +
               "<bookmark:application name=\"" + app + "\" exec=\"x\" modified=\"" + stamp +
               "\" count=\"1\"/></bookmark:applications></metadata></info></bookmark>\n";
    };
    test::writeFile(
        xbel, "<?xml version=\"1.0\"?>\n<xbel version=\"1.0\" "
              "xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\">\n" +
              entry("file:///old.png", "Marigold", "2021-01-01T00:00:00Z") +
              entry("file:///newest.png", "Marigold", "2024-03-01T12:00:00.5Z") +
              entry("file:///theirs.png", "Other", "2025-01-01T00:00:00Z") +
              entry("https://example.org/web.png", "Marigold", "2024-06-01T00:00:00Z") +
              entry("file:///tie1.png", "Marigold", "2022-01-01T00:00:00Z") +
              entry("file:///tie2.png", "Marigold", "2022-01-01T00:00:00Z") +
              entry("file:///newer.png", "Marigold", "2024-03-01T12:00:00Z") + "</xbel>\n");
    EXPECT_EQ(RecentDocuments(xbel).recentDocuments(),
              (QStringList{"/newest.png", "/newer.png", "/tie2.png", "/tie1.png", "/old.png"}));
}

}  // namespace
}  // namespace marigold
