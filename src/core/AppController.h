#pragma once

#include <QObject>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QThread>
#include <QTimer>
#include <functional>
#include <optional>

#include "constraints/RatioController.h"
#include "core/Document.h"
#include "destinations/MediaBrowser.h"
#include "destinations/TargetController.h"
#include "output/BackgroundOutputWriter.h"
#include "output/OutputViewDelegate.h"
#include "output/TempFolder.h"
#include "output/TmpFileWriter.h"
#include "platform/Defaults.h"
#include "platform/RecentDocuments.h"
#include "platform/UndoManager.h"
#include "processing/ImageProcessor.h"
#include "selection/InputViewDelegate.h"

class QTimer;

namespace marigold {

class WindowSide;

// Owns the one document and changes it: every editing setting goes through an undoable
// setter here, settings kept in the defaults are read from there on every call, and every
// file that leaves is rendered from the document at full resolution when it is written.
// The views show the document and report edits; dialogs are the window side's.
//
// The work is split by job: AppController.cpp (start-up, preferences, derived values),
// EditingSettings.cpp (the undoable settings), SelectionCommands.cpp (selection, preview,
// output size), DocumentCommands.cpp (bringing a picture in) and OutputCommands.cpp
// (taking the output out).
class AppController : public QObject, public InputViewDelegate, public OutputViewDelegate {
    Q_OBJECT

public:
    // Registers the factory defaults with `defaults` (which must outlive the controller).
    explicit AppController(Defaults& defaults, QObject* parent = nullptr);

    // Where alerts and dialogs go; without one, alerts are dropped and questions get their
    // default answers (headless runs and tests).
    void setWindowSide(WindowSide* window) { _window = window; }
    const Document& document() const { return _document; }
    Defaults& defaults() override { return _defaults; }
    UndoManager& undoManager() { return _undoManager; }
    ImageProcessor& imageProcessor() { return _imageProcessor; }
    // The constraint on the selection; the input view reads it at each press.
    RatioController& ratioController() { return _ratioController; }
    // The destination wells; also the output view's double-click receiver.
    TargetController& targetController() { return _targetController; }

    // Settings in the defaults.
    bool sharpen() const;
    void setSharpen(bool on);
    float sharpness() const;
    void setSharpness(float sharpness);
    int fileFormat() const;
    void setFileFormat(int format);
    // 0 (shrink to fit) or 2 (actual pixels); any other stored value reads as 2.
    int previewMode() const;
    void setPreviewMode(int mode);
    QString quality() const;
    void setQuality(const QString& text);
    bool limitFilesize() const;
    void setLimitFilesize(bool on);
    QString filesizeLimit() const;
    void setFilesizeLimit(const QString& text);

    // Settings in fields.
    double rotation() const { return _document.rotation(); }
    void setRotation(double degrees);
    float scaleFactor() const { return _document.scaleFactor(); }
    void setScaleFactor(float factor);
    void setScaleFactorWithoutUndo(float factor) override;
    // A drag of the scale slider: fast previews while it moves, then one undo step from the
    // factor at the press to the one at the release.
    void dragScaleFactor(float factor);
    void finishScaleDrag(float before, float after);
    int scaleFactorPercent() const;
    void setScaleFactorPercent(int percent);
    int pixelWidth() const { return _pixelWidth; }
    int pixelHeight() const { return _pixelHeight; }
    void setPixelWidth(int width);
    void setPixelHeight(int height);

    // Derived values.
    bool hasQuality() const;
    bool hasFilesizeLimit() const;
    bool userResizable() const;
    void setUserResizable(bool);
    int compression() const;
    // Fast previews follow the pointer while the selection is dragged; not undoable.
    bool livePreview() const;
    void setLivePreview(bool on);

    // The preview: a fast one draws no more pixels than `setPreviewPixelLimit` allows and
    // is not sharpened.
    void updatePreviewFast(bool fast);
    void updatePreview();
    void setPreviewPixelLimit(QSize devicePixels);
    // The scale from a typed output size: exactly that many pixels come out. A size equal to
    // the current output's changes nothing.
    void pixelWidthChanged();
    void pixelHeightChanged();
    void scaleImageByPixels(int step);

    // The selection; each of these is one undo step named "Crop Selection".
    void setMarquee(const Marquee& marquee);
    void selectAll();
    void deselect();
    void dragMarquee(const Marquee& marquee) override;
    void finishMarqueeDrag(const Marquee& before, const Marquee& after) override;
    void nudgeMarquee(const Marquee& marquee) override;

    // Settings the menus change at once, without undo: "PreserveExif" (0 none, 1 the
    // source's EXIF block, 2 all its metadata), "Interpolation" (0 default, 1 none, 2 low,
    // 3 high) and "Border".
    int preserveMetadata() const;
    void setPreserveMetadata(int tag);
    int imageInterpolation() const;
    void setImageInterpolation(int tag);
    bool border() const;
    void toggleBorder();

    // The picture itself. Each is one undo step named after it: a flip undoes by flipping
    // again, desaturation by bringing back the picture it replaced. A turn shows the picture
    // as opened turned by the angle (counter-clockwise) and deselects; a canvas that would be
    // too large is refused with a notice.
    void flipHorizontal();
    void flipVertical();
    void desaturate();
    void rotateImage90(bool left);
    // To the rotation slider's tick nearest a turn of 22.5° right (left) of the angle, the
    // 0.0001 breaking a tie toward the turn; by 1° (negative: right).
    void rotateImageCW();
    void rotateImageCCW();
    void rotateImageFine(double degrees);
    // While the rotation slider is dragged: the 350 x 350 copy turned, no undo; the picture is
    // deselected as a turn does.
    void setPreviewRotation(double degrees);

    void clear();
    void resetControls();
    void preferenceDidChange();

    // Opening: false (with a one-line reason) leaves the document exactly as it was. A file
    // whose end is damaged opens with the part that could be read, and a notice says so.
    bool openFile(const QString& path) override;
    bool openFile(const QString& path, QString* reason);
    QString sourcePath() const { return _document.sourcePath(); }
    void setSourcePath(const QString& path);
    // The document name (the editable name field); "untitled" when empty.
    QString filename();
    void setDocumentName(const QString& name);
    QString documentName() const { return _document.name(); }
    TempFolder& tempFolder() { return _tempFolder; }
    QString tmpdir() { return _tempFolder.tmpdir(); }
    // At quit: the temporary folder and every output file in it go.
    bool cleanupTmpdir();

    // The output leaving: always rendered from the document at full resolution, never taken
    // from a preview, and written once per state of the document and its settings.
    bool hasOutput() const;
    QString writeTmpFile() override;
    // True when the last write found no JPEG quality that keeps the file under the limit.
    bool limitTooLow() const { return _writer.limitTooLow(); }
    void alertIfLimitTooLow() override;
    void clearCache();
    // The size of the file a save would write ("83 KB", "83 KB at quality 62" under a
    // limit), or why there is none; empty while it is being written. After every full
    // preview and change of the output settings the file is written in the background.
    QString filesizeText() const { return _filesizeText; }
    void paste();
    void copyOutputImage();
    void saveDocumentAs();
    // The save dialog, starting in `directory` (empty: the dialog's own choice).
    void saveDocumentInFolder(const QString& directory);
    // Writes the output file and hands it to the destination well `tag`.
    void sendTo(int tag);
    // Shows the photo browser, whose chosen photos open here.
    void openPhotoBrowser();

    // Screen capture through `marigold-screencapture`: the window leaves the screen while it
    // runs, and the picture it writes opens as "screenshot".
    enum class CaptureKind { Selection, Window, Screen };
    // The helper's arguments before the output path.
    static QStringList screenCaptureArguments(CaptureKind kind, bool playSound);
    void captureSelection();
    void captureWindow();
    void captureScreen();
    // After the timed capture's dialog: a countdown of `delay` seconds (at least 1), then the
    // screen, with the pointer painted in.
    void captureScreenTimedStart(int delay);
    void captureAtCountdownEnd();
    void runScreenCapture(const QStringList& arguments);
    bool loadScreenCapture(const QString& path);
    bool isCapturing() const { return _capture.isRunning() || _countdown; }
    // The typed name with the output format's extension: a recognised image extension is
    // replaced, anything else kept and the extension appended.
    static QString userEnteredFilename(const QString& name, int format);
    // Writes the output and copies it to `target` (its extension replaced by the written
    // file's), replacing an existing file atomically.
    void savePanelDidEnd(bool accepted, const QString& target);
    // Reloads the source file; possible only while it exists.
    void revert();
    bool canRevert() const;
    // Empties the document's picture but keeps the source path and the name.
    void discardImage();
    void print();
    void openLastDocument();
    RecentDocuments& recentDocuments() { return _recentDocuments; }

    // The window title: back to "Marigold" 4 seconds from now; one step of scrolling a
    // name out of "Marigold - name".
    QString title() const { return _title; }
    void setTitle(const QString& title);
    void clearTitle();
    void animateTitle(QTimer* timer);

    // Start-up steps that follow building the window, and the one-time key clean-ups.
    void applicationDidFinishLaunching();
    void removeOldDefaults();
    void migrateCheckAtStartup();

Q_SIGNALS:
    void scaleFactorChanged();
    void pixelSizeChanged();
    void settingsChanged();
    void rotationChanged(double degrees);
    void userResizableChanged();
    void inputControlsEnabledChanged(bool enabled);
    // A new preview, or none with `message` saying why (the output would be too large).
    void previewChanged(const Image& preview, const QString& message);
    // The size of the last file written, or empty once it no longer shows the output.
    void filesizeTextChanged(const QString& text);
    void titleChanged(const QString& title);
    // The timed capture's countdown: empty, then "3", "2", "1"; ended as the capture starts.
    void countdownChanged(const QString& text);
    void countdownEnded();

private:
    template <typename Value, typename Setter>
    void _registerUndo(Value old, Setter setter, const QString& actionName);
    template <typename Call>
    void _later(int msec, Call call);
    template <typename Value>
    void _storeSetting(QLatin1StringView key, Value old, Value value,
                       void (AppController::*setter)(Value), const QString& actionName);
    struct TypedSetting;
    static const TypedSetting kQuality;
    static const TypedSetting kFilesizeLimit;
    QString _typedSetting(const TypedSetting& setting) const;
    void _setTypedSetting(const TypedSetting& setting, const QString& text);
    void _showImage(const Image& image);
    void _startCapture(CaptureKind kind);
    void _captureExited(int status);
    void _flip(bool horizontally);
    void _setOpenedImage(Image original);
    Image _renderOutput(bool fast) const;
    // The output as a call that owns what it reads, so it may run on another thread.
    std::function<Image()> _outputRenderer(bool fast) const;
    OutputSettings _outputSettings() const;
    // An output setting changed: the file no longer shows the output; a new one is made.
    void _outputSettingsChanged();
    void _scheduleLiveFile();
    void _startLiveFile();
    void _liveFileDone(const WrittenFile& file, quint64 generation);
    void _showWrittenFile(const WrittenFile& file, const OutputSettings& settings);
    void _setFilesizeText(const QString& text);
    // The output file, and in `rendered` (when given) the pixels it was encoded from.
    QString _writeTmpFile(Image* rendered);
    void _scaleToPixels(int pixels, float cropPixels, int current);
    void _showPlannedSize(const CropPlan& plan);
    void _alert(const QString& title, const QString& text, const QString& button = {});

    Defaults& _defaults;
    UndoManager _undoManager;
    ImageProcessor _imageProcessor;
    Document _document;
    RatioController _ratioController{_defaults, _undoManager};
    TargetController _targetController{_defaults};
    std::unique_ptr<MediaBrowser> _mediaBrowser;
    ChildProcess _capture;
    QTimer* _captureDeadline = nullptr;
    QThread* _countdown = nullptr;
    bool _lastShotIsTimed = false;
    std::optional<QPoint> _cursorPosition;
    TempFolder _tempFolder;
    TmpFileWriter _writer{_tempFolder};
    // What the background job in flight was started for.
    struct LiveJob {
        quint64 generation = 0;
        quint64 revision = 0;
        OutputSettings settings;
    } _liveJob;
    bool _liveFilePending = false;
    QString _filesizeText;
    RecentDocuments _recentDocuments;
    WindowSide* _window = nullptr;
    int _pixelWidth = 0;
    int _pixelHeight = 0;
    QString _title = QStringLiteral("Marigold");
    // Last: destroyed first, so a running job ends before anything it writes into goes.
    BackgroundOutputWriter _liveWriter;
};

}  // namespace marigold
