#include "destinations/DestinationDrawer.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QLabel>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

#include "destinations/TargetController.h"
#include "destinations/TargetView.h"
#include "platform/HelpPages.h"

namespace marigold {

DestinationDrawer::DestinationDrawer(TargetController& controller, QString tmpdir,
                                     QWidget* parent)
    : QDockWidget(tr("Destinations"), parent),
      _controller(controller),
      _tmpdir(std::move(tmpdir)),
      _doubleClick(new QButtonGroup(this)) {
    setObjectName(QStringLiteral("destinationDrawer"));
    setAllowedAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);

    auto* content = new QWidget;
    auto* grid = new QGridLayout;
    auto* heading = new QLabel(tr("Double-click"));
    heading->setToolTip(tr("Where a double-click on the output sends it"));
    grid->addWidget(heading, 0, 1, Qt::AlignHCenter);
    for (int tag = 0; tag < TargetController::kWellCount; ++tag) {
        auto* well = new TargetView(controller, tag);
        auto* choice = new QRadioButton;
        choice->setAccessibleName(tr("Double-click sends to destination %1").arg(tag + 1));
        choice->setToolTip(tr("Send the output here when it is double-clicked"));
        _doubleClick->addButton(choice, tag);
        grid->addWidget(well, tag + 1, 0);
        grid->addWidget(choice, tag + 1, 1, Qt::AlignHCenter);
        _wells.append(well);
    }
    auto* help = new QToolButton;
    help->setIcon(QIcon::fromTheme(QStringLiteral("help-contents")));
    help->setText(tr("Help"));
    help->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    help->setAccessibleName(tr("Destinations help"));
    help->setToolTip(tr("How the destination wells work"));
    connect(help, &QToolButton::clicked, this,
            [this] { openHelpPage(QStringLiteral("Drawer.html"), _tmpdir); });

    auto* layout = new QVBoxLayout(content);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addWidget(help, 0, Qt::AlignLeft);
    setWidget(content);

    connect(_doubleClick, &QButtonGroup::idClicked, &controller,
            &TargetController::selectDoubleClickDestination);
    connect(&controller, &TargetController::doubleClickDestinationChanged, this,
            &DestinationDrawer::_showDoubleClickDestination);
    _showDoubleClickDestination(controller.doubleClickDestination());
}

void DestinationDrawer::_showDoubleClickDestination(int tag) {
    if (QAbstractButton* choice = _doubleClick->button(tag)) choice->setChecked(true);
}

}  // namespace marigold
