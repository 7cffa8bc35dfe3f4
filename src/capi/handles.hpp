// Between the opaque handles of the public headers and the classes behind them. The only casts between the two are
// here.
#pragma once

#include <memory>
#include <type_traits>
#include <typeinfo>

#include "formats/asc/asc_info.hpp"
#include "formats/asc/asc_message.hpp"
#include "formats/asc/asc_reader.hpp"
#include "formats/asc/asc_writer.hpp"
#include "formats/blf/blf_info.hpp"
#include "formats/blf/blf_message.hpp"
#include "formats/blf/blf_reader.hpp"
#include "formats/csv/csv_info.hpp"
#include "formats/csv/csv_writer.hpp"
#include "formats/lin/lin_info.hpp"
#include "formats/lin/lin_message.hpp"
#include "formats/lin/lin_reader.hpp"
#include "formats/lin/lin_writer.hpp"
#include "formats/mf4/mdf_can_message.hpp"
#include "formats/mf4/mdf_info.hpp"
#include "formats/mf4/mdf_reader.hpp"
#include "formats/mf4/mdf_writer.hpp"
#include "formats/native/btr_info.hpp"
#include "formats/native/btr_session_reader.hpp"
#include "formats/native/btr_session_writer.hpp"
#include "formats/native/btrc_info.hpp"
#include "formats/native/btrc_reader.hpp"
#include "formats/native/btrc_writer.hpp"
#include "formats/native/zelk_message.hpp"
#include "formats/trc/trc_info.hpp"
#include "formats/trc/trc_message.hpp"
#include "formats/trc/trc_reader.hpp"
#include "formats/trc/trc_writer.hpp"
#include "util/failures.hpp"
#include "xlatr/objects.h"

namespace xlatr::capi {

// A handle points to the object's root interface, whatever its family, so that a TrcInfo may be passed as an ITraceInfo
// and the like.
template <class Handle>
struct HandleOf;

#define XLATR_HANDLE(Handle, RootClass, ObjectClass) \
  template <>                                        \
  struct HandleOf<::Handle> {                        \
    using Root = RootClass;                          \
    using Object = ObjectClass;                      \
  }

XLATR_HANDLE(IMessage, xlatr::IMessage, xlatr::IMessage);
XLATR_HANDLE(ITraceInfo, xlatr::ITraceInfo, xlatr::ITraceInfo);
XLATR_HANDLE(BaseTraceInfo, xlatr::BaseTraceInfo, xlatr::BaseTraceInfo);
XLATR_HANDLE(TraceFileInfo, xlatr::BaseTraceInfo, xlatr::TraceFileInfo);
XLATR_HANDLE(BtrcInfo, xlatr::ITraceInfo, xlatr::BtrcInfo);
XLATR_HANDLE(BtrcFileHeader, xlatr::BtrcFileHeader, xlatr::BtrcFileHeader);
XLATR_HANDLE(BtrcReader, xlatr::ITraceReader, xlatr::BtrcReader);
XLATR_HANDLE(BtrcWriter, xlatr::ITraceWriter, xlatr::BtrcWriter);
XLATR_HANDLE(MessageBinaryFD, xlatr::IMessage, xlatr::ZelkBinaryMessage);
XLATR_HANDLE(CsvInfo, xlatr::ITraceInfo, xlatr::CsvInfo);
XLATR_HANDLE(CsvWriter, xlatr::ITraceWriter, xlatr::CsvWriter);
XLATR_HANDLE(TrcInfo, xlatr::ITraceInfo, xlatr::TrcInfo);
XLATR_HANDLE(TrcReader, xlatr::ITraceReader, xlatr::TrcReader);
XLATR_HANDLE(TrcWriter, xlatr::ITraceWriter, xlatr::TrcWriter);
XLATR_HANDLE(MessageCan, xlatr::IMessage, xlatr::BrixMessage);
XLATR_HANDLE(AscInfo, xlatr::ITraceInfo, xlatr::AscInfo);
XLATR_HANDLE(AscReader, xlatr::ITraceReader, xlatr::AscReader);
XLATR_HANDLE(AscWriter, xlatr::ITraceWriter, xlatr::AscWriter);
XLATR_HANDLE(MessageAsc, xlatr::IMessage, xlatr::AscMessage);
XLATR_HANDLE(KorlInfo, xlatr::ITraceInfo, xlatr::KorlInfo);
XLATR_HANDLE(KorlReader, xlatr::ITraceReader, xlatr::KorlReader);
XLATR_HANDLE(KorlWriter, xlatr::ITraceWriter, xlatr::KorlWriter);
XLATR_HANDLE(MessageLin, xlatr::IMessage, xlatr::KorlMessage);
XLATR_HANDLE(BlfInfo, xlatr::ITraceInfo, xlatr::BlfInfo);
XLATR_HANDLE(BlfReader, xlatr::ITraceReader, xlatr::BlfReader);
XLATR_HANDLE(BlfMessage, xlatr::IMessage, xlatr::BlfMessage);
XLATR_HANDLE(MdfInfo, xlatr::ITraceInfo, xlatr::MdfInfo);
XLATR_HANDLE(MdfReader, xlatr::ITraceReader, xlatr::MdfReader);
XLATR_HANDLE(MdfWriter, xlatr::ITraceWriter, xlatr::MdfWriter);
XLATR_HANDLE(MdfCanMessage, xlatr::IMessage, xlatr::MdfCanMessage);
XLATR_HANDLE(BtrInfo, xlatr::ITraceInfo, xlatr::BtrInfo);
XLATR_HANDLE(BtrSessionReader, xlatr::ITraceReader, xlatr::BtrSessionReader);
XLATR_HANDLE(BtrSessionWriter, xlatr::ITraceWriter, xlatr::BtrSessionWriter);
XLATR_HANDLE(SessionMessage, xlatr::IMessage, xlatr::SessionMessage);
XLATR_HANDLE(BtrSessionEntry, xlatr::BtrSessionEntry, xlatr::BtrSessionEntry);
XLATR_HANDLE(SessionDescriptor, xlatr::SessionDescriptor, xlatr::SessionDescriptor);
XLATR_HANDLE(SessionLocation, xlatr::SessionLocation, xlatr::SessionLocation);
XLATR_HANDLE(SessionDateTime, xlatr::SessionDateTime, xlatr::SessionDateTime);
XLATR_HANDLE(MsgEntry, xlatr::MsgEntry, xlatr::MsgEntry);
#undef XLATR_HANDLE

// The object behind a handle. A null handle, and one of an object of another class, raise a
// ConverterProcessingException.
template <class Handle>
auto& object(Handle* handle) {
  using Traits = HandleOf<std::remove_const_t<Handle>>;
  using Root = std::conditional_t<std::is_const_v<Handle>, const typename Traits::Root, typename Traits::Root>;
  using Object = std::conditional_t<std::is_const_v<Handle>, const typename Traits::Object, typename Traits::Object>;
  if (handle == nullptr) {
    throwProcessingFailure("Object cannot be null");
  }
  auto* const root = reinterpret_cast<Root*>(handle);
  if constexpr (std::is_same_v<Root, Object>) {
    return *root;
  } else if constexpr (std::is_final_v<Object>) {
    if (typeid(*root) != typeid(Object)) {
      throwProcessingFailure("Object is of another class");
    }
    return static_cast<Object&>(*root);
  } else {
    auto* const derived = dynamic_cast<Object*>(root);
    if (derived == nullptr) {
      throwProcessingFailure("Object is of another class");
    }
    return *derived;
  }
}

// Hands an object to the caller.
template <class Handle, class Object>
Handle* handle(std::unique_ptr<Object> object) {
  typename HandleOf<Handle>::Root* const root = object.release();
  return reinterpret_cast<Handle*>(root);
}

// A handle of an object that keeps its owner.
template <class Handle, class Object>
const Handle* borrowedHandle(const Object& object) {
  const typename HandleOf<Handle>::Root* const root = &object;
  return reinterpret_cast<const Handle*>(root);
}

template <class Handle>
void destruct(Handle* handle) {
  delete reinterpret_cast<typename HandleOf<Handle>::Root*>(handle);
}

}  // namespace xlatr::capi
