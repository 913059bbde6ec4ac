// The words of the set-up dialog, code page 1252.
#pragma once

namespace vl {

struct SetupTexts {
  const char* title;
  const char* settings;  // the root of the tree
  const char* player;
  const char* newSetting;
  const char* newAction;
  const char* add;
  const char* rename;
  const char* remove;
  const char* input;
  const char* prefer;
  const char* ok;
  const char* cancel;
  const char* pressKey;
  const char* pressMouse;
  const char* pressJoystick;
  const char* pressAny;
  const char* escape;
  const char* typeName;
};

inline constexpr SetupTexts kEnglishSetup = {
    "Game input",
    "Settings",
    "Player",
    "Setting",
    "Action",
    "Add",
    "Rename",
    "Delete",
    "Input...",
    "Use first",
    "OK",
    "Cancel",
    "Press a key.",
    "Press a button of the mouse, turn its wheel, or move it.",
    "Press a button of the joystick, or move it.",
    "Press what must be held together with it.",
    "Escape gives up.",
    "Type the name and press Enter.",
};

inline constexpr SetupTexts kFrenchSetup = {
    "P\xE9riph\xE9riques de jeu",
    "Configurations",
    "Joueur",
    "Configuration",
    "Action",
    "Ajouter",
    "Renommer",
    "Supprimer",
    "Entr\xE9"
    "e...",
    "Pr\xE9"
    "f\xE9rer",
    "OK",
    "Annuler",
    "Appuyez sur une touche.",
    "Appuyez sur un bouton de la souris, ou bougez-la.",
    "Appuyez sur un bouton de la manette, ou bougez-la.",
    "Appuyez sur ce qui doit \xEAtre tenu en m\xEAme temps.",
    "\xC9"
    "chap pour annuler.",
    "Tapez le nom puis Entr\xE9"
    "e.",
};

}  // namespace vl
