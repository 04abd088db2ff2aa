#pragma once

#include <QString>

// What Marigold tells the browser in its settings document: the window's title and the
// program that opens a photo when nobody reads the browser's answers.
struct PhotoSettings {
    QString title;
    QString application;
};

// Lines of "Key=Value"; '#' starts a comment. Values are taken as they stand, so a path
// with '=' or ',' in it survives.
PhotoSettings readPhotoSettings(const QString& path);
