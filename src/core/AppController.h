#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <functional>

#include "output/OutputViewDelegate.h"
#include "output/TempFolder.h"
#include "platform/Defaults.h"
#include "platform/RecentDocuments.h"
#include "platform/UndoManager.h"
#include "processing/ImageProcessor.h"
#include "selection/InputViewDelegate.h"

namespace marigold {

class InputImageView;
class OutputImageView;

// The one document: the source shown in the input view, its selection, and every setting
// that turns them into the output. Settings kept in the defaults are read from there on
// every call; every setter goes through the undo manager.
class AppController : public QObject, public InputViewDelegate, public OutputViewDelegate {
    Q_OBJECT

public:
    // Registers the factory defaults with `defaults` (which must outlive the controller).
    explicit AppController(Defaults& defaults, QObject* parent = nullptr);

    void setViews(InputImageView* input, OutputImageView* output);
    Defaults& defaults() override { return _defaults; }
    UndoManager& undoManager() override { return _undoManager; }
    ImageProcessor& imageProcessor() { return _imageProcessor; }

    // Settings in the defaults.
    bool sharpen() const;
    void setSharpen(bool on);
    float sharpness() const;
    void setSharpness(float sharpness);
    int fileFormat() const override;
    void setFileFormat(int format);
    int previewMode() const;
    void setPreviewMode(int mode);
    QString quality() const;
    void setQuality(const QString& text);
    bool limitFilesize() const;
    void setLimitFilesize(bool on);
    QString filesizeLimit() const override;
    void setFilesizeLimit(const QString& text);

    // Settings in fields.
    double rotation() const { return _rotation; }
    void setRotation(double degrees);
    float scaleFactor() const { return _scaleFactor; }
    void setScaleFactor(float factor);
    void setScaleFactorWithoutUndo(float factor) override;
    int scaleFactorPercent() const;
    void setScaleFactorPercent(int percent);
    int pixelWidth() const { return _pixelWidth; }
    int pixelHeight() const { return _pixelHeight; }
    void setPixelWidth(int width);
    void setPixelHeight(int height);

    // Derived values.
    bool hasQuality() const;
    bool hasFilesizeLimit() const override;
    bool userResizable() const;
    void setUserResizable(bool) override;
    int compression() const override;
    bool livePreview() const override;

    // Preview and size commands.
    void updatePreviewFast(bool fast) override;
    void updatePreview() override;
    void pixelWidthChanged();
    void pixelHeightChanged();
    void scaleImageByPixels(int step);

    // Selection and document commands.
    void selectAll();
    void deselect();
    void clear();
    void resetControls() override;
    void preferenceDidChange();

    // Opening: false (with a one-line reason) leaves the document exactly as it was.
    bool openFile(const QString& path) override;
    bool openFile(const QString& path, QString* reason);
    QString sourcePath() const override { return _sourcePath; }
    void setSourcePath(const QString& path);
    // The document name (the editable name field); "untitled" when empty.
    QString filename() override;
    void setDocumentName(const QString& name);
    QString documentName() const { return _documentName; }

    // The source file's metadata, read afresh on every call.
    std::optional<Metadata> metadata() const override;
    TempFolder& tempFolder() override { return _tempFolder; }
    QString tmpdir() { return _tempFolder.tmpdir(); }
    // At quit: the temporary folder and every output file in it go.
    bool cleanupTmpdir() { return _tempFolder.cleanupTmpdir(); }

    // Bringing images in and taking the output out.
    void paste();
    void copyOutputImage();
    void saveDocumentAs();
    // The save dialog, starting in `directory` (empty: the dialog's own choice).
    void saveDocumentInFolder(const QString& directory);
    // The typed name with the output format's extension: a recognised image extension is
    // replaced, anything else kept and the extension appended.
    static QString userEnteredFilename(const QString& name, int format);
    // Writes the output and copies it to `target` (its extension replaced by the written
    // file's), replacing an existing file atomically.
    void savePanelDidEnd(bool accepted, const QString& target);
    // Reloads the source file; possible only while it exists.
    void revert();
    bool canRevert() const;
    // Empties both views but keeps the source path and the name.
    void discardImage();
    void print();
    void openLastDocument();
    RecentDocuments& recentDocuments() { return _recentDocuments; }

    // The window title: back to "Marigold" 4 seconds from now; one step of scrolling a
    // name out of "Marigold - name".
    void clearTitle();
    void animateTitle(QTimer* timer);

    // Start-up steps that follow building the window, and the one-time key clean-ups.
    void applicationDidFinishLaunching();
    void removeOldDefaults();
    void migrateCheckAtStartup();

    // Shows a modal alert; replaceable so that tests need no modal dialog.
    std::function<void(const QString& title, const QString& text)> showAlert;
    // Asked before the file-size limit is turned on; answers true for "Don't Show This
    // Message Again". Replaceable so that tests need no modal dialog.
    std::function<bool()> askSizeLimitWarning;

Q_SIGNALS:
    void scaleFactorChanged();
    void pixelSizeChanged();
    void settingsChanged();
    void rotationChanged(double degrees);
    void documentNameChanged(const QString& name);
    void sourcePathChanged(const QString& path);
    void userResizableChanged();
    void inputControlsEnabledChanged(bool enabled);

private:
    template <typename Value, typename Setter>
    void _registerUndo(Value old, Setter setter, const QString& actionName);
    template <typename Setter>
    void _later(int msec, Setter call);
    bool _hasSelection() const;
    void _refreshOutputView();
    bool _showSizeLimitWarning();
    QWidget* _window() const;
    void _setTitle(const QString& title);

    Defaults& _defaults;
    UndoManager _undoManager;
    ImageProcessor _imageProcessor;
    QPointer<InputImageView> _inputView;
    QPointer<OutputImageView> _outputView;

    float _scaleFactor = 1.0f;
    double _rotation = 0;
    int _pixelWidth = 0;
    int _pixelHeight = 0;
    TempFolder _tempFolder;
    RecentDocuments _recentDocuments;
    QString _sourcePath;
    QString _documentName = QStringLiteral("untitled");
};

}  // namespace marigold
