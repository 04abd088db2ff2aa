#pragma once

#include <QListView>
#include <QStandardItemModel>

// A grid of thumbnails of every picture under a folder. Thumbnails come from the desktop's
// shared thumbnail cache where it has them, and are otherwise made in the background, so the
// grid is usable at once. Photos are dragged out as files; a double click chooses one.
class PhotoGrid : public QListView {
    Q_OBJECT

public:
    explicit PhotoGrid(QWidget* parent = nullptr);

    // Lists the pictures under `folder`, found on another thread.
    void load(const QString& folder);

Q_SIGNALS:
    void photoChosen(const QString& path);
    void loaded(int count);

protected:
    void startDrag(Qt::DropActions supportedActions) override;

private:
    void _show(const QStringList& paths);

    QStandardItemModel _photos;
};
