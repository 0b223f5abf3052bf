#include "sha256.h"

#include "failure.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kBytesAtOnce = std::size_t{ 256 } << 10U;

void Require(int done)
{
    if (done != 1)
        throw std::runtime_error("SHA-256 sums can't be made on this system");
}

// Closes itself.
class ReadOnlyFile {
  public:
    explicit ReadOnlyFile(const std::string& path)
        : path_(path), file_(open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (file_ < 0)
            throw SystemFailure(path, errno);
    }
    ReadOnlyFile(const ReadOnlyFile&) = delete;
    ReadOnlyFile& operator=(const ReadOnlyFile&) = delete;
    ~ReadOnlyFile() { close(file_); }

    // Fewer bytes than there is room for come before the end too; none at the end.
    std::span<const unsigned char> Read(std::span<unsigned char> room) const
    {
        ssize_t count = -1;
        while ((count = read(file_, room.data(), room.size())) < 0)
            if (errno != EINTR)
                throw SystemFailure(path_, errno);
        return room.first(static_cast<std::size_t>(count));
    }

  private:
    const std::string& path_;
    int file_;
};

} // namespace

void Sha256::FreeContext::operator()(evp_md_ctx_st* context) const
{
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context_(EVP_MD_CTX_new())
{
    Require(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

void Sha256::Add(std::span<const unsigned char> bytes)
{
    Require(EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
}

Sha256::Sum Sha256::Finish()
{
    Sum sum{};
    Require(EVP_DigestFinal_ex(context_.get(), sum.data(), nullptr));
    return sum;
}

std::string HexOf(const Sha256::Sum& sum)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const unsigned char byte : sum) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

std::string Sha256OfFile(const std::string& path)
{
    const ReadOnlyFile file(path);
    std::vector<unsigned char> room(kBytesAtOnce);
    Sha256 sum;
    for (auto bytes = file.Read(room); !bytes.empty(); bytes = file.Read(room))
        sum.Add(bytes);
    return HexOf(sum.Finish());
}

} // namespace tympan::tool
