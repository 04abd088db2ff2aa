#pragma once

#include <QByteArray>

// A settings file as a damaged disk, a careless hand edit or another program might leave
// it: text where numbers and booleans belong, codes out of range, a broken colour, QSettings'
// own type markers with nothing sensible inside.
namespace marigold::test {

inline const QByteArray kNonsenseSettings =
    "[General]\n"
    "FileFormat=jpeg\n"
    "JpegQuality=high\n"
    "LimitFilesize=perhaps\n"
    "FilesizeLimit=99999\n"
    "DisplaySizeLimitMessage=@Invalid()\n"
    "PreviewMode=7\n"
    "Sharpen=sometimes\n"
    "Sharpness=sharp\n"
    "TimedCaptureDelay=0\n"
    "PlaySound=loud\n"
    "TimeStamp=9\n"
    "Cursor=6\n"
    "OpenLastAtLaunch=@ByteArray(\\x1\\x2)\n"
    "CrossHair=a, b\n"
    "ConstrainRotation=0x1\n"
    "AutoOrderBack=2.5e\n"
    "AutoOrderFront=\n"
    "PreserveExif=-1\n"
    "Border=treu\n"
    "BorderThickness=100000\n"
    "BorderColor=\"#ff00zzff\"\n"
    "Interpolation=1e400\n";

}  // namespace marigold::test
