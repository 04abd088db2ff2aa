#include "core/SettingsMenus.h"

#include <QActionGroup>
#include <QMenu>

#include "core/AppController.h"

namespace marigold {

namespace {

struct Choice {
    const char* title;
    const char* toolTip;
    int tag;
};

// A submenu of exclusive choices, each checked exactly when its tag is the stored value.
QMenu* addChoices(QMenu* menu, const QString& title, std::initializer_list<Choice> choices,
                  std::function<int()> stored, std::function<void(int)> choose, QObject* context) {
    QMenu* submenu = menu->addMenu(title);
    auto* group = new QActionGroup(submenu);
    for (const Choice& choice : choices) {
        QAction* action = submenu->addAction(QObject::tr(choice.title));
        action->setToolTip(QObject::tr(choice.toolTip));
        action->setData(choice.tag);
        action->setCheckable(true);
        group->addAction(action);
        QObject::connect(action, &QAction::triggered, context,
                         [choose, tag = choice.tag] { choose(tag); });
    }
    QObject::connect(submenu, &QMenu::aboutToShow, context, [group, stored] {
        for (QAction* action : group->actions()) action->setChecked(action->data() == stored());
    });
    return submenu;
}

}  // namespace

QMenu* buildOutputMenu(AppController& controller, QWidget* parent, QObject* context) {
    auto* menu = new QMenu(QObject::tr("O&utput"), parent);
    menu->setToolTipsVisible(true);
    addChoices(
        menu, QObject::tr("Preserve Metadata"),
        {{QT_TR_NOOP("None"), QT_TR_NOOP("Output files carry no metadata"), 0},
         {QT_TR_NOOP("EXIF from Source JPEG"),
          QT_TR_NOOP("JPEG output carries the source JPEG's EXIF block; TIFF output its metadata"),
          1},
         {QT_TR_NOOP("All Metadata"),
          QT_TR_NOOP("JPEG and TIFF output carry all of the source's metadata"), 2}},
        [&controller] { return controller.preserveMetadata(); },
        [&controller](int tag) { controller.setPreserveMetadata(tag); }, context)
        ->setToolTipsVisible(true);
    addChoices(
        menu, QObject::tr("Image Interpolation"),
        {{QT_TR_NOOP("Default"), QT_TR_NOOP("The drawing system's own choice"), 0},
         {QT_TR_NOOP("None"), QT_TR_NOOP("Nearest pixel: hard edges, fastest"), 1},
         {QT_TR_NOOP("Low"), QT_TR_NOOP("Quick smoothing"), 2},
         {QT_TR_NOOP("High"), QT_TR_NOOP("Best smoothing"), 3}},
        [&controller] { return controller.imageInterpolation(); },
        [&controller](int tag) { controller.setImageInterpolation(tag); }, context)
        ->setToolTipsVisible(true);
    QAction* border = menu->addAction(QObject::tr("Border"));
    border->setToolTip(QObject::tr("Frame the output with the border set in Preferences"));
    border->setCheckable(true);
    QObject::connect(border, &QAction::triggered, context,
                     [&controller] { controller.toggleBorder(); });
    const auto showBorder = [border, &controller] { border->setChecked(controller.border()); };
    QObject::connect(menu, &QMenu::aboutToShow, context, showBorder);
    QObject::connect(&controller, &AppController::settingsChanged, context, showBorder);
    showBorder();
    return menu;
}

}  // namespace marigold
