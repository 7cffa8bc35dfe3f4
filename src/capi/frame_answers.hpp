// How the functions of frames.h answer: every one looks its handle up, does its work and turns what went wrong into a
// code.
#pragma once

#include <exception>
#include <ios>
#include <memory>
#include <new>
#include <string>

#include "capi/frame_handles.hpp"
#include "capi/frame_records.hpp"
#include "frames/frame_failure.hpp"
#include "xlatr/frames.h"

namespace xlatr::capi {

[[nodiscard]] xlatr_code codeOf(FrameProblem problem);

// Keeps the text of a failure, for which there may be no memory.
void keepText(std::string& error, const char* text) noexcept;

// Runs an action and answers its code, or that of what it raised, the text of which is kept in `error`.
template <typename Action>
xlatr_code answer(std::string& error, Action action) noexcept {
  try {
    return action();
  } catch (const FrameFailure& failure) {
    keepText(error, failure.what());
    return codeOf(failure.problem());
  } catch (const std::ios_base::failure& failure) {
    keepText(error, failure.what());
    return XLATR_ERROR_SYSTEM;
  } catch (const std::bad_alloc&) {
    keepText(error, "the system has no memory left");
    return XLATR_ERROR_MEMORY;
  } catch (const std::exception& failure) {
    keepText(error, failure.what());
    return XLATR_ERROR_UNEXPECTED;
  } catch (...) {
    keepText(error, "an unexpected failure");
    return XLATR_ERROR_UNEXPECTED;
  }
}

// The same where no handle keeps a text.
template <typename Action>
xlatr_code answer(Action action) noexcept {
  std::string ignored;
  return answer(ignored, action);
}

// Never destroyed: a caller's thread may still run while a process ends.
template <class Handle, class Object>
HandleTable<Handle, Object>& table() {
  static auto* const handles = new HandleTable<Handle, Object>;
  return *handles;
}

// Looks a handle up and runs an action with what it stands for.
template <class Handle, class Object, typename Action>
xlatr_code with(HandleTable<Handle, Object>& handles, const Handle* handle, Action action) noexcept {
  std::shared_ptr<Object> object;
  const xlatr_code found = answer([&] {
    object = handles.find(handle);
    return XLATR_OK;
  });
  if (object == nullptr) {
    return found == XLATR_OK ? XLATR_ERROR_HANDLE : found;
  }
  return answer(object->error, [&] { return action(*object); });
}

template <class Handle, class Object>
xlatr_code close(HandleTable<Handle, Object>& handles, const Handle* handle) noexcept {
  return answer([&] { return handles.remove(handle) == nullptr ? XLATR_ERROR_HANDLE : XLATR_OK; });
}

template <class Handle, class Object>
const char* errorOf(HandleTable<Handle, Object>& handles, const Handle* handle) noexcept {
  const char* text = nullptr;
  with(handles, handle, [&text](Object& object) {
    text = object.error.c_str();
    return XLATR_OK;
  });
  return text;
}

template <class Record>
xlatr_code give(const Record& record, Record* caller) {
  return writeRecord(record, caller) ? XLATR_OK : XLATR_ERROR_ARGUMENT;
}

// Makes a handle for an object that is about to be opened by `open`, which may fail: the handle then tells why.
template <class Handle, class Object, typename Open>
xlatr_code openHandle(HandleTable<Handle, Object>& handles, Handle** out, Open open) noexcept {
  if (out == nullptr) {
    return XLATR_ERROR_ARGUMENT;
  }
  *out = nullptr;
  std::shared_ptr<Object> object;
  const xlatr_code made = answer([&] {
    object = std::make_shared<Object>();
    *out = handles.add(object);
    return XLATR_OK;
  });
  return made != XLATR_OK ? made : answer(object->error, [&] { return open(*object); });
}

}  // namespace xlatr::capi
