#pragma once

#include <QLabel>
#include <QList>
#include <QString>
#include <QWidget>

namespace marigold {

class Defaults;

// The information window: what is known about the document's source file (name, size,
// pixels, camera, dates, exposure, comment) with a small picture of it. It follows the
// source path it is given and keeps its frame under "InfoWindow".
class InfoController : public QWidget {
    Q_OBJECT

public:
    explicit InfoController(Defaults& defaults, QWidget* parent = nullptr);

    QString path() const { return _path; }
    // Shows the facts of the file at `path`; a path where no file is changes nothing.
    void setPath(const QString& path);
    void showWindow();
    // The value shown for a field label ("Name", "ISO", …), for tests and accessibility.
    QString fieldText(const QString& label) const;

protected:
    void hideEvent(QHideEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void _parseFileAtPath();

    Defaults& _defaults;
    QString _path;
    bool _stale = false;
    QLabel* _thumbnail;
    QList<QPair<QLabel*, QLabel*>> _fields;
};

}  // namespace marigold
