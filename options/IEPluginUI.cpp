#include "IEPluginUI.h"

#include "FileTypeAssociations.h"
#include "ui_IEPluginUI.h"

IEPluginUI::IEPluginUI(QWidget *parent) : ConfigPage(parent), ui(std::make_unique<Ui::IEPluginUI>())
{
    ui->setupUi(this);
    const auto flag = [](const char *control, SettingStore &store, const char *key, const char *byDefault,
                         const char *help) {
        return FieldBinding{.control = QLatin1String(control),
                            .store = &store,
                            .key = QLatin1String(key),
                            .defaultValue = QLatin1String(byDefault),
                            .codec = FieldCodec::Flag,
                            .hotHelp = QLatin1String(help)};
    };
    Bind({
        flag("chkRSS", m_fileTypes, "RSS", "1", "Subscribe to RSS feeds opened in the browser."),
        flag("chkATOM", m_fileTypes, "ATOM", "1", "Subscribe to Atom feeds opened in the browser."),
        flag("chkFEED", m_fileTypes, "FEED", "1", "Subscribe through feed: links."),
        flag("chkOPML", m_fileTypes, "OPML", "1", "Import subscription lists opened in the browser."),
        flag("chkPreviewOnUSMAdd", m_engine, "ShowPreviewWindowOnAutoSubscribe", "1",
             "Show a feed before subscribing to it from the browser."),
        flag("chkInlineTopLevel", m_engine, "Inline Subscriptions", "0",
             "List the subscribe commands at the top of the plug-in's menu."),
    });
    LoadValues();
}

IEPluginUI::~IEPluginUI() = default;

void IEPluginUI::Apply()
{
    ConfigPage::Apply();
    if (Dirty())
        return; // nothing was stored
    const auto associations = FileTypeAssociations::ForThisDesktop();
    for (const QCheckBox *box : {ui->chkRSS, ui->chkATOM, ui->chkFEED, ui->chkOPML})
        associations->SetHandled(box->objectName().mid(3), box->isChecked());
}
