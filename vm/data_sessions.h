#pragma once
// The door between the VM and the table engine: everything the VM needs from
// work areas and data sessions. Each stack owns one (VmStack::sessions). The
// table engine implements it over its sessions and work areas; until a
// runtime installs that, a stack has PlainDataSessions: one session with its
// settings and no work areas. vm/ never includes tables/.
//
// Name rules the VM keeps through this door:
//   name         a field of the current work area hides a variable of that name
//   m.name       always the variable; the door is not asked
//   alias.name   the work area of that alias answers, as an object, for its
//   alias->name  field; without such a work area the alias is a variable
#include <cstdint>
#include <memory>

#include "vm/session_settings.h"

namespace zobase {

class Variant;
class VmStack;

// A field found by name: the table that holds it and its position there. The
// VM only hands it back; what `table` points at is the implementation's.
struct field_ref_st {
    const void* table;
    uint32_t index;
};

class DataSessions {
public:
    virtual ~DataSessions() = default;
    DataSessions(const DataSessions&) = delete;
    DataSessions& operator=(const DataSessions&) = delete;

    // The current session's settings. Not virtual: every comparison of
    // text reads SET EXACT.
    session_settings_st& settings() noexcept { return *settings_; }
    const session_settings_st& settings() const noexcept { return *settings_; }

    // Moves whenever a bare name may find another field or none, or an alias
    // another work area: a table opened, closed or selected, the current
    // session or the expression's table changed. What the VM keeps about
    // names stands while it stays (vm/name_cache.h).
    uint64_t fields_version() const noexcept { return fields_version_; }
    // Moves with everything that may give a name another meaning: each move
    // of the fields version and each change of the stack's visible variables
    // (VmStack::names_changed). One compare tells whether a kept answer
    // stands (vm/name_cache.h). Every instance starts beyond the values any
    // other reaches, so an answer kept under another one never matches.
    uint64_t names_epoch() const noexcept { return *epoch_; }
    void names_changed() noexcept { ++*epoch_; }
    // From now on the epoch is kept at `where` (inside the stack that owns
    // these sessions: StackDataSessions), going on from where it stands.
    void keep_epoch_at(uint64_t* where) noexcept {
        *where = *epoch_;
        epoch_ = where;
    }
    // True while no table can hide a bare name: none runs an expression and
    // the current work area has none. Known only once find_field found no
    // table at the current fields version; false while unknown.
    bool bare_names_free() const noexcept { return free_version_ == fields_version_; }

    // The current session's id, as SET DATASESSION and set("DATASESSION")
    // know it; the first session is 1.
    virtual int32_t session_id() const = 0;

    // A bare name: the field of that name of the table whose index or filter
    // expression is running, else of the current work area. False when there
    // is none, and the name is then a variable.
    virtual bool find_field(VmStack* stack, uint32_t symbol, field_ref_st* out) = 0;
    // The current record's value of a field found by find_field, into dest,
    // which must be clean.
    virtual void read_field(VmStack* stack, const field_ref_st& field, Variant* dest) = 0;
    // Stores a value into the current record's field, as REPLACE does.
    virtual void write_field(VmStack* stack, const field_ref_st& field, const Variant& value) = 0;
    // The object of the open work area with that alias in the current
    // session, into dest, which must be clean; false when no open work area
    // has that alias.
    virtual bool find_work_area(VmStack* stack, uint32_t alias, Variant* dest) = 0;
    // A field by position of the table whose index or filter expression is
    // running (VmOpReadFieldByIndex), into dest, which must be clean.
    virtual void read_expression_field(VmStack* stack, uint16_t index, Variant* dest) = 0;
    // A thread's run ended: every work area of every session of the stack
    // closes, so that no file stays open with nobody left to close it, and
    // the first session is current again. Without work areas, nothing.
    virtual void close_work_areas(VmStack*) {}

protected:
    explicit DataSessions(session_settings_st* current) noexcept : settings_(current) {}
    // An implementation calls this whenever its current session changes.
    void use_settings_of(session_settings_st* current) noexcept { settings_ = current; }
    void fields_changed() noexcept {
        ++fields_version_;
        ++*epoch_;
    }
    // find_field saw no table to look in: bare names are free until the
    // fields version moves.
    void note_bare_names_free() noexcept { free_version_ = fields_version_; }

private:
    session_settings_st* settings_;
    uint64_t fields_version_ = 0;
    uint64_t free_version_ = ~0ull;
    uint64_t own_epoch_ = first_names_epoch();
    uint64_t* epoch_ = &own_epoch_;
    static uint64_t first_names_epoch() noexcept;
};

// A stack's data sessions, owned. Whichever is installed keeps its names
// epoch here, inside the stack, where the by-name instructions read it
// without going through the sessions; installing others moves it into
// their range, so nothing kept under the ones before answers.
class StackDataSessions {
public:
    explicit StackDataSessions(std::unique_ptr<DataSessions> sessions) noexcept { install(std::move(sessions)); }
    StackDataSessions(const StackDataSessions&) = delete;
    StackDataSessions& operator=(const StackDataSessions&) = delete;
    StackDataSessions& operator=(std::unique_ptr<DataSessions> sessions) noexcept {
        install(std::move(sessions));
        return *this;
    }

    DataSessions* operator->() const noexcept { return sessions_.get(); }
    DataSessions& operator*() const noexcept { return *sessions_; }
    DataSessions* get() const noexcept { return sessions_.get(); }
    // The sessions go (their work areas close) while the stack still stands.
    void reset() noexcept { sessions_.reset(); }
    uint64_t names_epoch() const noexcept { return epoch_; }

private:
    // The sessions replaced may still move the epoch as they close.
    void install(std::unique_ptr<DataSessions> sessions) noexcept {
        sessions->keep_epoch_at(&epoch_);
        sessions_ = std::move(sessions);
    }

    uint64_t epoch_ = 0;
    std::unique_ptr<DataSessions> sessions_;
};

// The data sessions of a stack before the table engine: one session, no
// work areas, so a bare name is never a field.
class PlainDataSessions final : public DataSessions {
public:
    PlainDataSessions() noexcept : DataSessions(&session_) { note_bare_names_free(); }

    int32_t session_id() const override { return 1; }
    bool find_field(VmStack*, uint32_t, field_ref_st*) override { return false; }
    bool find_work_area(VmStack*, uint32_t, Variant*) override { return false; }
    // No field is ever found, so these two are never reached.
    void read_field(VmStack* stack, const field_ref_st& field, Variant* dest) override;
    void write_field(VmStack* stack, const field_ref_st& field, const Variant& value) override;
    // Only compiled index and filter expressions read by position: 1001.
    void read_expression_field(VmStack* stack, uint16_t index, Variant* dest) override;

private:
    session_settings_st session_;
};

}  // namespace zobase
