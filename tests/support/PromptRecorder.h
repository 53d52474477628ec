#pragma once

#include "PromptSeam.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <functional>
#include <optional>

// Answers every prompt and keeps a copy of it as asked, for as long as it lives. The answer is
// the next one queued for the prompt's kind, else answer when set, else the neutral one; onAsk
// sees each prompt after it was kept and may fill in what a user would type or tick.
class PromptRecorder
{
public:
    PromptRecorder()
        : m_previous(PromptSeam::SetHandler([this](Prompt &prompt) {
              asked.append(prompt);
              if (onAsk)
                  onAsk(prompt);
              auto &queue = answers[int(prompt.kind)];
              if (!queue.isEmpty())
                  return queue.takeFirst();
              return answer.value_or(PromptSeam::NeutralAnswer(prompt.kind));
          }))
    {
    }
    ~PromptRecorder() { PromptSeam::SetHandler(m_previous); }
    PromptRecorder(const PromptRecorder &) = delete;
    PromptRecorder &operator=(const PromptRecorder &) = delete;

    // The main texts asked, of one kind or of all.
    [[nodiscard]] QStringList texts(std::optional<PromptKind> kind = std::nullopt) const
    {
        QStringList found;
        for (const Prompt &prompt : asked) {
            if (!kind || prompt.kind == *kind)
                found.append(prompt.mainText);
        }
        return found;
    }

    QList<Prompt> asked;
    QHash<int, QList<int>> answers;
    std::optional<int> answer;
    std::function<void(Prompt &)> onAsk;

private:
    PromptSeam::Handler m_previous;
};
