// Prints the size of the picture that is named on its command line, whatever its format.
#include <tympan/tympan.h>

#include <iostream>
#include <memory>

int main(int, char** arguments)
{
    const std::unique_ptr<BasePictureIF> picture(create_picture_object(arguments[1]));
    if (!picture || !picture->OpenPictureFile(arguments[1], true, false, nullptr))
        return 1;
    std::cout << picture->FileWidthInPixels() << " x " << picture->FileHeightInPixels()
              << " pixels\n";
}
