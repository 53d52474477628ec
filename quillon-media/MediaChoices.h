#pragma once

#include <QString>

// What the enclosure settings say for one subscription: its own section's keys, else the
// general "Settings" ones.
struct MediaChoices
{
    enum class Download {
        Never,
        Always,
        Ask // no answer for the subscription yet and the user is to be asked
    };

    Download download = Download::Never;
    bool storeMusic = true;
    bool storeVideos = true;
    bool storePictures = true;
    bool organizeBySubscription = true;
    bool overwrite = false;
    bool podcasting = false;
    QString podcastApp = QStringLiteral("itunes");
    bool playlist = false;
    bool playlistNamedAutomatically = true;
    QString playlistTitle;
    bool autoDelete = false;
    int keepNewest = 0; // files kept per subscription; 0 keeps all

    // The download answer: the subscription's own "EnableAutoDownload" when it has one; else
    // "ask" while the general "PromptForAutoDownload" is on; else the general answer.
    [[nodiscard]] static Download decide(const QString &own, const QString &general, const QString &prompt);
    // The settings' reading of a boolean text.
    [[nodiscard]] static bool isTrue(const QString &text);
};
