#include <QDragEnterEvent>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>

#include "destinations/Destination.h"
#include "destinations/TargetController.h"
#include "destinations/TargetView.h"
#include "platform/Defaults.h"
#include "platform/DefaultsKeys.h"

using namespace marigold;

// Drags as other applications offer them, built as real mime data and judged by a real well.
class TestTargetView : public QObject {
    Q_OBJECT

private:
    QTemporaryDir dir;

    QString folder(const QString& name) {
        QDir(dir.path()).mkpath(name);
        return dir.filePath(name);
    }
    QString file(const QString& name) {
        QFile out(dir.filePath(name));
        out.open(QIODevice::WriteOnly);
        return out.fileName();
    }
    static QMimeData* urls(const QStringList& paths) {
        auto* data = new QMimeData;
        QList<QUrl> list;
        for (const QString& path : paths) list << QUrl::fromLocalFile(path);
        data->setUrls(list);
        return data;
    }

private Q_SLOTS:
    void dropsAreJudgedAndTakenFromTheirMimeData() {
        Defaults defaults(dir.filePath(QStringLiteral("settings.ini")));
        TargetController targets(defaults);
        TargetView view(targets, 0);
        const QString web = folder(QStringLiteral("web.site"));
        const QString other = folder(QStringLiteral("other"));
        auto* fromWell = new QMimeData;
        fromWell->setData(TargetView::dragType(),
                          QJsonDocument(QJsonObject::fromVariantMap(configWithDestination(
                                            other, QStringLiteral("other"), 4, kFolderTarget)))
                              .toJson());
        const struct {
            QMimeData* data;
            Qt::DropAction expected;  // IgnoreAction: refused
            const char* why;
        } drags[] = {
            {urls({web, other}), Qt::IgnoreAction, "two folders"},
            {urls({file(QStringLiteral("notes.txt"))}), Qt::IgnoreAction, "a plain document"},
            {fromWell, Qt::MoveAction, "another well"},
            {urls({web}), Qt::LinkAction, "one folder"},
        };
        for (const auto& drag : drags) {
            QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction | Qt::MoveAction | Qt::LinkAction,
                                  drag.data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(&view, &enter);
            QCOMPARE_EQ(enter.isAccepted() ? enter.dropAction() : Qt::IgnoreAction, drag.expected);
        }
        QDropEvent drop(QPointF(10, 10), Qt::LinkAction, drags[3].data, Qt::LeftButton,
                        Qt::NoModifier);
        QApplication::sendEvent(&view, &drop);
        QTRY_COMPARE(targets.well(0)->destination(), web);
        QCOMPARE(view.accessibleDescription(), QStringLiteral("web.site"));
        QCOMPARE(defaults.dictionaryForKey(keys::DefDestinations).keys(), QStringList{"0"});
        QVERIFY(!view.picture().isNull());
        for (const auto& drag : drags) delete drag.data;
    }
};

QTEST_MAIN(TestTargetView)
#include "tst_TargetView.moc"
