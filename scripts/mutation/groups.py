"""What is mutated, and the programs whose tests are to notice it."""

from __future__ import annotations

from dataclasses import dataclass
from pathlib import Path


@dataclass(frozen=True)
class Group:
    """The parsers and printers of a folder.

    Files are named without their ending; a header goes with its source. Programs stand in the order in which they are
    asked: the tests of the folder first.
    """

    folder: str
    files: tuple[str, ...]
    programs: tuple[str, ...]

    def paths(self, root: Path) -> list[str]:
        """Return the files that there are, relative to the root."""
        named = (f"{self.folder}/{file}{ending}" for file in self.files for ending in (".cpp", ".hpp"))
        return [path for path in named if (root / path).is_file()]


def _files(names: str) -> tuple[str, ...]:
    return tuple(names.split())


GROUPS: dict[str, Group] = {
    "util": Group(
        "src/util",
        _files(
            "date_fields date_names date_time date_time_parsing date_time_text decimal enum_order hex layout "
            "little_endian numbers plain_fields real_prefix render start_time text text_buffer time_units "
            "token_cursor utf8"
        ),
        ("util_test", "datetime_test", "trc_test", "asc_test", "lin_test", "csv_test", "native_test", "golden_test"),
    ),
    "trc": Group(
        "src/formats/trc",
        _files(
            "trc_frames trc_header trc_header_keys trc_message trc_parser trc_plain_lines trc_printer trc_version"
        ),
        ("trc_test", "golden_test", "frames_test"),
    ),
    "asc": Group(
        "src/formats/asc",
        _files(
            "asc_bus_lines asc_date asc_frame_parser asc_frames asc_head_keys asc_message asc_parser asc_plain_lines "
            "asc_printer asc_status_parser asc_tokens"
        ),
        ("asc_test", "golden_test", "frames_test"),
    ),
    "csv": Group(
        "src/formats/csv",
        _files(
            "csv_cell_readers csv_cells csv_column_table csv_columns csv_frame_rows csv_frames csv_header csv_parser "
            "csv_plain_rows csv_printer csv_record_input csv_start_time csv_table csv_table_frames csv_table_head"
        ),
        ("csv_test", "golden_test", "frames_test"),
    ),
    "lin": Group(
        "src/formats/lin",
        _files("lin_frames lin_header lin_header_keys lin_parser lin_plain_lines lin_printer"),
        ("lin_test", "golden_test", "frames_test"),
    ),
    "native": Group(
        "src/formats/native",
        _files(
            "btr_directory btr_layout btr_session_entry btr_slot_frame btrc_blocks btrc_file_header "
            "btrc_record_frame native_frame_record native_record record_content session_clock zelk_message"
        ),
        ("native_test", "golden_test", "frames_test"),
    ),
    "blf": Group(
        "src/formats/blf",
        _files(
            "blf_can_message blf_can_objects blf_event_objects blf_lin_message blf_lin_objects blf_log_bodies "
            "blf_log_content blf_log_head blf_log_layout blf_log_objects blf_log_scanner blf_message "
            "blf_object_names blf_text_objects"
        ),
        ("blf_test", "golden_test", "frames_test"),
    ),
    "mf4": Group(
        "src/formats/mf4",
        _files(
            "block_base block_channel_schema block_channels block_conversion block_data block_groups block_header "
            "block_stream block_texts mdf_block_output mdf_can_decoding mdf_channel_search mdf_conversion "
            "mdf_data_parts mdf_data_stream mdf_frame_decoding mdf_frame_layout mdf_frame_output mdf_frame_schema "
            "mdf_inflater mdf_merge mdf_message_decoding mdf_number_field mdf_payload_choice mdf_record "
            "mdf_record_parser mdf_record_value mdf_time_scale mdf_variable_records record_bytes value_table "
            "zipped_bytes"
        ),
        ("mf4_test", "golden_test", "frames_test"),
    ),
}
