#include "app/FilePanelAccessory.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>

FilePanelAccessory FilePanelAccessory::add(QFileDialog& panel, bool withLineBreaks)
{
    FilePanelAccessory accessory;
    auto* layout = qobject_cast<QGridLayout*>(panel.layout());
    if (!layout) {
        return accessory;
    }
    const int row = layout->rowCount();
    accessory.textEncodingPopUp = new QComboBox(&panel);
    accessory.textEncodingPopUp->setObjectName(QStringLiteral("textEncodingPopUp"));
    layout->addWidget(new QLabel(QObject::tr("Encoding:"), &panel), row, 0);
    layout->addWidget(accessory.textEncodingPopUp, row, 1);
    if (withLineBreaks) {
        accessory.lineBreakPopUp = new QComboBox(&panel);
        accessory.lineBreakPopUp->setObjectName(QStringLiteral("lineBreakPopUp"));
        layout->addWidget(new QLabel(QObject::tr("Line Breaks:"), &panel), row + 1, 0);
        layout->addWidget(accessory.lineBreakPopUp, row + 1, 1);
    }
    return accessory;
}

void FilePanelAccessory::addHideExtensionBox(QFileDialog& panel, bool hidden)
{
    auto* layout = qobject_cast<QGridLayout*>(panel.layout());
    auto* name = panel.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    if (!layout || !name) {
        return;
    }
    auto* box = new QCheckBox(QObject::tr("Hide extension"), &panel);
    box->setObjectName(QStringLiteral("hideExtensionButton"));
    layout->addWidget(box, layout->rowCount(), 1);
    const auto apply = [&panel, name](bool hide) {
        const QString text = name->text();
        if (hide) {
            const QString extension = QFileInfo(text).suffix();
            if (!extension.isEmpty() && QFileInfo(text).completeBaseName().size() > 0) {
                panel.setDefaultSuffix(extension);
                name->setText(text.left(text.size() - extension.size() - 1));
            }
        } else if (!panel.defaultSuffix().isEmpty()) {
            if (!text.isEmpty() && QFileInfo(text).suffix().isEmpty()) {
                name->setText(text + u'.' + panel.defaultSuffix());
            }
            panel.setDefaultSuffix(QString());
        }
    };
    QObject::connect(box, &QCheckBox::toggled, &panel, apply);
    box->setChecked(hidden);
}
