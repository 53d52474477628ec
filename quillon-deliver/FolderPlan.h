#pragma once

#include <QString>
#include <QStringList>

// What the Outlook defaults page keeps for delivery ("OLCONSUMER", section "OutlookDefaults").
struct FolderDefaults
{
    QString topFolder;       // "TopFolderTitle": folder path, empty for the store's root
    bool subFolder = false;  // "RadioSubPlacement"
    QString subFolderTitle;  // "SubFolderTitle"
    QString theme;           // "Article_Theme"
    int movedInConfig = 0;   // "SubMovedInConfig", see docs/DESIGN.md
    int deletedInConfig = 2; // "SubDeletedInConfig"
    int movedInMailer = 0;   // "SubMovedInOutlook"
    int deletedInMailer = 0; // "SubDeletedInOutlook"
};

// Where one subscription's articles go, from its bag and its "SubscriptionSpecifics_<id>".
struct SubscriptionPlace
{
    qint32 id = 0;
    QString title;
    QString folderTitle; // "FOLDERTITLE"
    QString category;    // "~~~"-joined path
    QString url;
    bool specificFolder = false; // "StoreLocationOption" is the specific-folder choice
    QString specificPath;        // "StoreLocationSpecificFolder"
    bool namedFolder = true;     // "StoreInNamedFolder"
    QString theme;               // "Article_Theme"
    bool showImages = false;     // "ShowImages", keyed by the feed's address
};

// Turns the settings into a folder path (names from the store's root down).
class FolderPlan
{
public:
    using Folder = QStringList;
    enum class Theme { Plain, Full, Both };

    // Top folder, the optional named sub-folder, the category path, the subscription's folder;
    // or the specific folder, with the subscription's folder inside when so chosen.
    [[nodiscard]] static Folder folderFor(const FolderDefaults &defaults, const SubscriptionPlace &place);
    // The subscription's own folder name: "FOLDERTITLE", else its title, else its address.
    [[nodiscard]] static QString ownName(const SubscriptionPlace &place);
    // "Plain" text alone, "Full" HTML alone; "Default" what the defaults say, both when they
    // say "Default" too.
    [[nodiscard]] static Theme themeFor(const FolderDefaults &defaults, const SubscriptionPlace &place);

    // "\\Feeds\\News", "Feeds/News" and "Feeds\\News" all give {"Feeds", "News"}.
    [[nodiscard]] static Folder parsePath(const QString &path);
    // The folder pickers' form: "\\Feeds\\News".
    [[nodiscard]] static QString pathText(const Folder &folder);
    // One level of a folder name as the stores keep it, different for every name: separators,
    // '%', '~' and control characters as %XX of their UTF-8 bytes; a name over kMaxNameBytes
    // cut there with "~" and a hash of the whole name. Other names stay as they are.
    [[nodiscard]] static QString safeName(const QString &name);
    // Two levels of this length still fit in one Maildir++ folder name (255 bytes).
    static constexpr qsizetype kMaxNameBytes = 120;
};
