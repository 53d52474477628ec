#include "SubDefaultsUI.h"

#include "MinimumFrequency.h"
#include "ui_SubDefaultsUI.h"

#include <tuple>

namespace {
const QString kFrequencyField = QStringLiteral("the update frequency");
}

SubDefaultsUI::SubDefaultsUI(QWidget *parent)
    : ConfigPage(parent), ui(std::make_unique<Ui::SubDefaultsUI>()),
      m_engine(QStringLiteral("ENGINE"), QString(), ConsumerSettingStore::Kind::Integer)
{
    ui->setupUi(this);
    using C = FieldCodec;
    Bind({
        {.control = "txtUpdateFreq",
         .store = &m_engine,
         .key = "UPDATEFREQ",
         .defaultValue = "3600",
         .codec = C::Seconds,
         .hotHelp = "How often a subscription on the defaults is updated.",
         .unit = "cboUpdateFreq",
         .label = kFrequencyField},
        {.control = "txtDelRead",
         .store = &m_engine,
         .key = "DELETEREAD",
         .defaultValue = "259200",
         .codec = C::Seconds,
         .hotHelp = "Read articles older than this are deleted.",
         .unit = "cboDelRead",
         .toggle = "chkDelRead",
         .label = "the age of read articles"},
        {.control = "txtDelUnread",
         .store = &m_engine,
         .key = "DELETEUNREAD",
         .defaultValue = "1296000",
         .codec = C::Seconds,
         .hotHelp = "Unread articles older than this are deleted.",
         .unit = "cboDelUnread",
         .toggle = "chkDelUnread",
         .label = "the age of unread articles"},
    });
    for (QCheckBox *age : {ui->chkDelRead, ui->chkDelUnread})
        connect(age, &QCheckBox::toggled, this, &SubDefaultsUI::EnableAges);
    LoadValues();
}

SubDefaultsUI::~SubDefaultsUI() = default;

void SubDefaultsUI::FieldsLoaded()
{
    EnableAges();
}

void SubDefaultsUI::EnableAges()
{
    for (auto [check, number, unit] : {std::tuple{ui->chkDelRead, ui->txtDelRead, ui->cboDelRead},
                                       std::tuple{ui->chkDelUnread, ui->txtDelUnread, ui->cboDelUnread}}) {
        number->setEnabled(check->isChecked());
        unit->setEnabled(check->isChecked());
    }
}

void SubDefaultsUI::BeforeStore()
{
    MinimumFrequency::Correct(this, ui->txtUpdateFreq, ui->cboUpdateFreq, kFrequencyField);
}
