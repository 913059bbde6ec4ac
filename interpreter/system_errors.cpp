#include "interpreter/system_errors.h"

namespace vl {

namespace {

struct Row {
  uint32_t number;
  const char* english;
  const char* french;  // code page 1252
};

constexpr Row kRows[] = {
    {SYS_SUCCESS, "The operation completed successfully.",
     "L'op\xE9ration s'est termin\xE9"
     "e correctement."},
    {SYS_INVALID_FUNCTION, "Incorrect function.", "Fonction incorrecte."},
    {SYS_FILE_NOT_FOUND, "The system cannot find the file specified.",
     "Le fichier sp\xE9"
     "cifi\xE9 est introuvable."},
    {SYS_PATH_NOT_FOUND, "The system cannot find the path specified.",
     "Le chemin d'acc\xE8s sp\xE9"
     "cifi\xE9 est introuvable."},
    {SYS_TOO_MANY_OPEN_FILES, "The system cannot open the file.", "Le syst\xE8me ne peut pas ouvrir le fichier."},
    {SYS_ACCESS_DENIED, "Access is denied.", "Acc\xE8s refus\xE9."},
    {SYS_INVALID_HANDLE, "The handle is invalid.", "Descripteur non valide."},
    {SYS_NOT_ENOUGH_MEMORY, "Not enough storage is available to process this command.",
     "M\xE9moire insuffisante pour traiter cette commande."},
    {SYS_INVALID_DRIVE, "The system cannot find the drive specified.",
     "Le lecteur sp\xE9"
     "cifi\xE9 est introuvable."},
    {SYS_NO_MORE_FILES, "There are no more files.", "Il n'y a plus de fichiers."},
    {SYS_WRITE_PROTECT, "The media is write protected.",
     "Le support est prot\xE9g\xE9 en \xE9"
     "criture."},
    {SYS_SHARING_VIOLATION, "The process cannot access the file because it is being used by another process.",
     "Le processus ne peut pas acc\xE9"
     "der au fichier car ce fichier est utilis\xE9 par un autre processus."},
    {SYS_HANDLE_EOF, "Reached the end of the file.", "La fin du fichier est atteinte."},
    {SYS_BAD_NETPATH, "The network path was not found.", "Le chemin r\xE9seau n'a pas \xE9t\xE9 trouv\xE9."},
    {SYS_FILE_EXISTS, "The file exists.", "Le fichier existe."},
    {SYS_INVALID_PARAMETER, "The parameter is incorrect.", "Param\xE8tre incorrect."},
    {SYS_DISK_FULL, "There is not enough space on the disk.", "Espace insuffisant sur le disque."},
    {SYS_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect.",
     "La syntaxe du nom de fichier, de r\xE9pertoire ou de volume est incorrecte."},
    {SYS_DIR_NOT_EMPTY, "The directory is not empty.", "Le r\xE9pertoire n'est pas vide."},
    {SYS_ALREADY_EXISTS, "Cannot create a file when that file already exists.",
     "Impossible de cr\xE9"
     "er un fichier d\xE9j\xE0 existant."},
    {SYS_FILENAME_TOO_LONG, "The filename or extension is too long.", "Nom de fichier ou extension trop long."},
    {SYS_DIRECTORY, "The directory name is invalid.", "Nom de r\xE9pertoire non valide."},
};

}  // namespace

std::string SystemErrorText(uint32_t number, bool french) {
  for (const Row& row : kRows) {
    if (row.number == number) return french ? row.french : row.english;
  }
  return (french ? "Erreur syst\xE8me " : "System error ") + std::to_string(number) + ".";
}

}  // namespace vl
