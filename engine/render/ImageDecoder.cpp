#include "engine/render/ImageDecoder.h"

#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <optional>

#include "engine/outside/ConfinedChild.h"

namespace engine {

namespace {

// A picture of the largest size, the file and what a library needs besides; the child lives for
// many pictures, so its processor time says nothing, and each answer has a time of its own.
constexpr ProcessLimits kLimits{std::uint64_t{4} << 30, 7 * 24 * 3600};
constexpr std::chrono::seconds kLongestAnswer{120};
constexpr std::size_t kLongestMessage = 1000;

// Begins an answer; the pixels follow, or a message.
struct AnswerHead {
  std::uint32_t width;
  std::uint32_t height;
  std::uint32_t isFloat;
  std::uint32_t messageBytes;  // 0 for a picture
};

// Moves all bytes through a socket; false where the other side is gone or time is up.
class Transfer {
 public:
  explicit Transfer(int talk)
      : talk_(talk), deadline_(std::chrono::steady_clock::now() + kLongestAnswer) {}

  bool Send(const void* from, std::size_t bytes) const {
    const auto* at = static_cast<const char*>(from);
    return Move(bytes, POLLOUT, [&](std::size_t done, std::size_t left) {
      return ::send(talk_, at + done, left, MSG_NOSIGNAL | MSG_DONTWAIT);
    });
  }
  bool Receive(void* to, std::size_t bytes) const {
    auto* at = static_cast<char*>(to);
    return Move(bytes, POLLIN, [&](std::size_t done, std::size_t left) {
      return ::recv(talk_, at + done, left, MSG_DONTWAIT);
    });
  }

 private:
  template <class Step>
  bool Move(std::size_t bytes, short event, Step step) const {
    for (std::size_t done = 0; done < bytes;) {
      const ssize_t count = step(done, bytes - done);
      if (count > 0) {
        done += static_cast<std::size_t>(count);
      } else if (count == 0 || (errno != EINTR && errno != EAGAIN) || !WaitFor(event)) {
        return false;
      }
    }
    return true;
  }

  bool WaitFor(short event) const {
    using std::chrono::milliseconds;
    pollfd watched{talk_, event, 0};
    const auto left =
        std::chrono::duration_cast<milliseconds>(deadline_ - std::chrono::steady_clock::now());
    return left.count() > 0 && ::poll(&watched, 1, static_cast<int>(left.count())) >= 0;
  }

  int talk_;
  std::chrono::steady_clock::time_point deadline_;
};

// Reading and writing in the child, which may make few system calls but these two.
bool ReadAll(int talk, void* to, std::size_t bytes) {
  for (std::size_t done = 0; done < bytes;) {
    const ssize_t count = ::read(talk, static_cast<char*>(to) + done, bytes - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

bool WriteAll(int talk, const void* from, std::size_t bytes) {
  for (std::size_t done = 0; done < bytes;) {
    const ssize_t count = ::write(talk, static_cast<const char*>(from) + done, bytes - done);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    done += static_cast<std::size_t>(count);
  }
  return true;
}

// The one child of this process.
class Decoder {
 public:
  static Decoder& Get() {
    static Decoder decoder;
    return decoder;
  }

  void Use(const std::string& program) {
    const std::lock_guard lock(lock_);
    child_.reset();
    program_ = program;
  }

  // Nothing where there is no child to do it.
  std::optional<Result<Image>> Decode(std::string_view bytes) {
    const std::lock_guard lock(lock_);
    if (!IsReady()) return std::nullopt;
    try {
      return Exchange(bytes);
    } catch (...) {
      // No memory for an answer, of which the rest would be taken for the next one.
      child_.reset();
      throw;
    }
  }

 private:
  Result<Image> Exchange(std::string_view bytes) {
    const Transfer transfer(child_->Talk());
    const std::uint64_t length = bytes.size();
    AnswerHead head{};
    Image image;
    // A send that fails leaves the child's end to tell why.
    (void)(transfer.Send(&length, sizeof(length)) && transfer.Send(bytes.data(), bytes.size()));
    if (!transfer.Receive(&head, sizeof(head))) return Broken();
    if (head.messageBytes > 0) return Refusal(transfer, head);
    if (!CheckImageSize(head.width, head.height, head.isFloat ? 4 * sizeof(float) : 4))
      return Nonsense();
    image.width = head.width;
    image.height = head.height;
    const std::size_t channels = image.PixelCount() * 4;
    head.isFloat ? image.floats.resize(channels) : image.bytes.resize(channels);
    const bool whole = head.isFloat
                           ? transfer.Receive(image.floats.data(), channels * sizeof(float))
                           : transfer.Receive(image.bytes.data(), channels);
    return whole ? Result<Image>(std::move(image)) : Broken();
  }

  bool IsReady() {
    if (program_.empty()) return false;
    // A copy of this process must not talk to its child, nor end it.
    if (child_ && starter_ != ::getpid()) (void)child_.release();
    if (child_ && !child_->HasEnded()) return true;
    child_ = std::make_unique<ConfinedChild>();
    starter_ = ::getpid();
    if (child_->Start("The reader of pictures", program_, {kImageDecoderVerb}, kLimits,
                      ConfinedChild::Life::OfTalk) &&
        IsGreeted())
      return true;
    child_.reset();
    program_.clear();
    return false;
  }

  // It says a byte when it is behind its walls: what cannot be run says none.
  bool IsGreeted() const {
    char greeting = 0;
    return Transfer(child_->Talk()).Receive(&greeting, 1);
  }

  Result<Image> Refusal(const Transfer& transfer, const AnswerHead& head) {
    std::string message(std::min<std::size_t>(head.messageBytes, kLongestMessage), '\0');
    if (!transfer.Receive(message.data(), message.size())) return Broken();
    if (head.messageBytes > kLongestMessage) return Nonsense();
    for (char& letter : message) letter = static_cast<unsigned char>(letter) < 0x20 ? ' ' : letter;
    return Result<Image>::Failure(message);
  }

  // The child gave no answer, or not all of it.
  Result<Image> Broken() {
    child_->Kill();
    const ConfinedChild::End end = child_->Wait();
    if (!end.bySignal) return Damaged("gave up on it");
    return Damaged(end.number == SIGKILL ? "came to no end with it"
                                         : "stopped (signal " + std::to_string(end.number) + ")");
  }

  // Whatever comes next from the child is not to be believed either.
  Result<Image> Nonsense() { return Damaged("gave an answer that cannot be"); }

  Result<Image> Damaged(const std::string& itsReader) {
    child_.reset();
    return Result<Image>::Failure("The picture is damaged: its reader " + itsReader + ".");
  }

  std::mutex lock_;
  std::string program_;
  std::unique_ptr<ConfinedChild> child_;
  pid_t starter_ = 0;
};

Result<Image> DecodeGuarded(std::string_view bytes) {
  try {
    return DecodeImageHere(bytes);
  } catch (const std::bad_alloc&) {
    return Result<Image>::Failure("There is not enough memory for the picture.");
  } catch (const std::exception& error) {
    return Result<Image>::Failure(std::string("The picture cannot be read: ") + error.what());
  }
}

bool Answer(int talk, const Result<Image>& image) {
  if (!image) {
    const std::string message = image.Message().substr(0, kLongestMessage);
    const AnswerHead head{0, 0, 0, static_cast<std::uint32_t>(message.size())};
    return WriteAll(talk, &head, sizeof(head)) && WriteAll(talk, message.data(), message.size());
  }
  const Image& picture = image.Value();
  const AnswerHead head{picture.width, picture.height, picture.IsFloat(), 0};
  return WriteAll(talk, &head, sizeof(head)) &&
         WriteAll(talk, picture.bytes.data(), picture.bytes.size()) &&
         WriteAll(talk, picture.floats.data(), picture.floats.size() * sizeof(float));
}

}  // namespace

void DecodeImagesBy(const std::string& program) { Decoder::Get().Use(program); }

Result<Image> DecodeImage(std::string_view bytes) {
  std::optional<Result<Image>> image = Decoder::Get().Decode(bytes);
  return image ? std::move(*image) : DecodeImageHere(bytes);
}

int RunImageDecoder(int talk) {
  DropPrivileges();
  AllowComputingOnly(AllowReadingOnly({}));
  const char greeting = 1;
  if (!WriteAll(talk, &greeting, 1)) return 1;
  std::uint64_t length = 0;
  while (ReadAll(talk, &length, sizeof(length))) {
    std::string bytes(static_cast<std::size_t>(std::min(length, kLargestImageBytes)), '\0');
    if (length > kLargestImageBytes || !ReadAll(talk, bytes.data(), bytes.size())) return 1;
    if (!Answer(talk, DecodeGuarded(bytes))) return 1;
  }
  return 0;
}

}  // namespace engine
