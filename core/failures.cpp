// How each failure words itself to a user.
#include "core/failures.h"

#include "platform/ui.h"

LumetoException::LumetoException(const CString& messageText) : messageText_(messageText) {}
LumetoException::LumetoException(const char* messageText) : messageText_(messageText) {}
LumetoException::~LumetoException() = default;

void LumetoException::ReportError()
{
    AfxMessageBox(shownText_, 0, 0);
}

void LumetoException::ShowBetween(const char* before, const char* after)
{
    shownText_ = before + messageText_ + after;
    AfxMessageBox(shownText_, 0, 0);
}

void EntryErrorException::ReportError()
{
    ShowBetween("Page File Entry Error : ", "!");
}

void ReadFileException::ReportError()
{
    ShowBetween("", "");
}

void FileCorruptedException::ReportError()
{
    ShowBetween("File is corrupted! ", "");
}

void OpenFileException::ReportError()
{
    ShowBetween("File ", " open failed!");
}

void LoadFailedException::ReportError()
{
    ShowBetween("Load failed because of ", "!");
}

void IllegalSizeException::ReportError()
{
    ShowBetween("Illegal ", " size!");
}

void BufferSizeException::ReportError()
{
    ShowBetween("Buffer ", " is full and there is no room to add data!");
}
