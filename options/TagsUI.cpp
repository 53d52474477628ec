#include "TagsUI.h"

#include "FormControls.h"
#include "ui_TagsUI.h"

namespace {
FieldBinding Bound(const char *control, SettingStore &store, const char *key, const char *byDefault,
                   FieldCodec codec)
{
    return {.control = QLatin1String(control),
            .store = &store,
            .key = QLatin1String(key),
            .defaultValue = QLatin1String(byDefault),
            .codec = codec};
}
} // namespace

TagsUI::TagsUI(QWidget *parent) : ConfigPage(parent), ui(std::make_unique<Ui::TagsUI>())
{
    ui->setupUi(this);
    Bind({
        Bound("chkTaggingEnabled", m_service, "Tagging", "0", FieldCodec::Flag),
        Bound("txtTagServiceUsername", m_service, "UserName", "", FieldCodec::Text),
        Bound("txtTagServicePassword", m_service, "Password", "", FieldCodec::Secret),
        Bound("lblTagDisplayName", m_service, "TagServiceDisplayName", "Delicious", FieldCodec::Text),
        Bound("lblTagService2", m_service, "TagService", "delicious", FieldCodec::Text),
        Bound("chkRecursiveTags", m_display, "ShowEndlessTags", "0", FieldCodec::Flag),
        Bound("chkTagCounts", m_display, "ShowTagCounts", "1", FieldCodec::Flag),
        Bound("chkZeroCountTags", m_display, "ShowZeroCountTags", "0", FieldCodec::Flag),
    });
    connect(ui->chkTaggingEnabled, &QCheckBox::toggled, this, &TagsUI::FollowTagging);
    LoadValues();
}

TagsUI::~TagsUI() = default;

void TagsUI::FieldsLoaded()
{
    FollowTagging();
}

void TagsUI::FollowTagging()
{
    // The account means nothing while tagging is off.
    const bool on = ui->chkTaggingEnabled->isChecked();
    FormControls::SetEnabled({ui->lblTagServiceName, ui->lblTagDisplayName, ui->lblTagServiceId,
                              ui->lblTagService2, ui->lblTagServiceUsername, ui->txtTagServiceUsername,
                              ui->lblTagServicePassword, ui->txtTagServicePassword},
                             on);
}
