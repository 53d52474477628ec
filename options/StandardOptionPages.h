#pragma once

class OptionPageFactory;

// Registers the page of every module, and the network page, under their pane names.
void RegisterStandardOptionPages(OptionPageFactory &factory);
