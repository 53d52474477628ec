#pragma once

#include "PromptSeam.h"

#include <QStringList>

// Answers every prompt with 0 and keeps its text, for as long as it lives.
class PromptRecorder
{
public:
    PromptRecorder()
        : m_previous(PromptSeam::SetHandler([this](Prompt &prompt) {
              shown << prompt.mainText;
              return 0;
          }))
    {
    }
    ~PromptRecorder() { PromptSeam::SetHandler(m_previous); }
    QStringList shown;

private:
    PromptSeam::Handler m_previous;
};
