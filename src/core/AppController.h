#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <functional>

#include "platform/Defaults.h"
#include "platform/UndoManager.h"
#include "processing/ImageProcessor.h"
#include "selection/InputViewDelegate.h"

namespace marigold {

class InputImageView;
class OutputImageView;

// The one document: the source shown in the input view, its selection, and every setting
// that turns them into the output. Settings kept in the defaults are read from there on
// every call; every setter goes through the undo manager.
class AppController : public QObject, public InputViewDelegate {
    Q_OBJECT

public:
    // Registers the factory defaults with `defaults` (which must outlive the controller).
    explicit AppController(Defaults& defaults, QObject* parent = nullptr);

    void setViews(InputImageView* input, OutputImageView* output);
    Defaults& defaults() { return _defaults; }
    UndoManager& undoManager() override { return _undoManager; }
    ImageProcessor& imageProcessor() { return _imageProcessor; }

    // Settings in the defaults.
    bool sharpen() const;
    void setSharpen(bool on);
    float sharpness() const;
    void setSharpness(float sharpness);
    int fileFormat() const;
    void setFileFormat(int format);
    int previewMode() const;
    void setPreviewMode(int mode);
    QString quality() const;
    void setQuality(const QString& text);
    bool limitFilesize() const;
    void setLimitFilesize(bool on);
    QString filesizeLimit() const;
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
    bool hasFilesizeLimit() const;
    bool userResizable() const;
    void setUserResizable(bool) override;
    int compression() const;
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
    QString sourcePath() const { return _sourcePath; }
    void setSourcePath(const QString& path);
    // The document name (the editable name field); "untitled" when empty.
    QString filename();
    void setDocumentName(const QString& name);
    QString documentName() const { return _documentName; }

    // Start-up steps that follow building the window, and the one-time key clean-ups.
    void applicationDidFinishLaunching();
    void removeOldDefaults();
    void migrateCheckAtStartup();

    // Asked before the file-size limit is turned on; answers true for "Don't Show This
    // Message Again". Replaceable so that tests need no modal dialog.
    std::function<bool()> askSizeLimitWarning;

Q_SIGNALS:
    void scaleFactorChanged();
    void pixelSizeChanged();
    void settingsChanged();
    void rotationChanged(double degrees);
    void documentNameChanged(const QString& name);
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

    Defaults& _defaults;
    UndoManager _undoManager;
    ImageProcessor _imageProcessor;
    QPointer<InputImageView> _inputView;
    QPointer<OutputImageView> _outputView;

    float _scaleFactor = 1.0f;
    double _rotation = 0;
    int _pixelWidth = 0;
    int _pixelHeight = 0;
    QString _sourcePath;
    QString _documentName = QStringLiteral("untitled");
};

}  // namespace marigold
