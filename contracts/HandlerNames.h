#pragma once

// The handlers that callbacks and request procedures call by name on their target window.
// A target offers each as a Q_INVOKABLE method taking the arguments noted here.
namespace HandlerNames {

// Unsolicited engine messages and add answers (message bag handle).
inline constexpr char EventSubscribeClientMessage[] = "EventSubscribeClientMessage";
// Answers to settings updates (message bag handle).
inline constexpr char HandleSubscribeClientCallback[] = "HandleSubscribeClientCallback";
// Preview and preflight answers (message bag handle).
inline constexpr char EventPreviewCallback[] = "EventPreviewCallback";
// The directory's root OPML list (message bag handle).
inline constexpr char EventRootOPMLCallback[] = "EventRootOPMLCallback";
// One OPML list below the root (tag, message bag handle).
inline constexpr char EventSubOPMLCallback[] = "EventSubOPMLCallback";
// The articles of one subscription (message bag handle).
inline constexpr char EventSubscriptionItemsCallback[] = "EventSubscriptionItemsCallback";
// The engine's search sources (message bag handle).
inline constexpr char EventSearchSourcesCallback[] = "EventSearchSourcesCallback";
// The feed readers the engine can import from (message bag handle).
inline constexpr char EventImportSourcesCallback[] = "EventImportSourcesCallback";
// The status line (text).
inline constexpr char SetStatusText[] = "SetStatusText";
// Reload the list and tree after the last add came back (no arguments).
inline constexpr char DoDisplayRefresh[] = "DoDisplayRefresh";

} // namespace HandlerNames
