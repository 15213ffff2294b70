#pragma once

namespace kovena {

class Storyboard;

// Adds the bank page scene and the segue the card and net banking screens open it with.
// Safe to call more than once.
void addBankPage(Storyboard &storyboard);

} // namespace kovena
