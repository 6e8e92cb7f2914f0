#pragma once
// Field positions (0-based) in the regulator's CDBS public dump files, in
// the order the regulator's readme for those files lists them. Only the
// fields the importer reads are named; a record may carry more fields after
// the last one listed (later dumps append fields), and each record ends with
// "|^|". Files are Latin-1, dates MM/DD/YYYY.

#include <cstddef>

namespace qarvel::importers::cdbs {

// fm_eng_data.dat: ant_input_pwr, ant_max_pwr_gain, ant_polarization,
// ant_rotation, antenna_id, antenna_type, application_id, asd_service,
// asrn_na_ind, asrn, avg_horiz_pwr_gain, biased_lat, biased_long,
// border_code, border_dist, docket_num, effective_erp, elev_amsl,
// elev_bldg_ag, eng_record_type, facility_id, fm_dom_status, gain_area,
// haat_horiz_rc_mtr, haat_vert_rc_mtr, hag_horiz_rc_mtr, hag_overall_mtr,
// hag_vert_rc_mtr, horiz_bt_erp, horiz_erp, lat_deg, lat_dir, lat_min,
// lat_sec, lon_deg, lon_dir, lon_min, lon_sec, loss_area, max_ant_pwr_gain,
// max_haat, max_horiz_erp, max_vert_erp, multiplexor_loss,
// power_output_vis_kw, predict_coverage_area, predict_pop, rcamsl_horiz_mtr,
// rcamsl_vert_mtr, station_class, terrain_data_src, vert_bt_erp, vert_erp,
// num_sections, present_area, percent_change, spacing,
// terrain_data_src_other, trans_power_output, mainkey, lat_whole_secs,
// lon_whole_secs, station_channel, lic_ant_make, lic_ant_model_num,
// min_horiz_erp, haat_horiz_calc_ind, erp_w, trans_power_output_w,
// market_group_num, last_change_date.
namespace fm_eng {
constexpr std::size_t ant_rotation = 3, antenna_id = 4, antenna_type = 5, application_id = 6,
                      asd_service = 7, asrn = 9, border_dist = 14, docket_num = 15, elev_amsl = 17,
                      eng_record_type = 19, facility_id = 20, fm_dom_status = 21, haat_horiz_rc_mtr = 23,
                      hag_horiz_rc_mtr = 25, horiz_bt_erp = 28, horiz_erp = 29, lat_deg = 30, lat_dir = 31,
                      lat_min = 32, lat_sec = 33, lon_deg = 34, lon_dir = 35, lon_min = 36, lon_sec = 37,
                      max_horiz_erp = 41, rcamsl_horiz_mtr = 47, station_class = 49, vert_bt_erp = 51,
                      vert_erp = 52, station_channel = 62;
constexpr std::size_t kMinFields = station_channel + 1;
}  // namespace fm_eng

// application.dat: app_arn, app_service, application_id, facility_id,
// file_prefix, comm_city, comm_state, fac_frequency, station_channel,
// fac_callsign, general_app_service, app_type, paper_filed_ind, dtv_type,
// frn, shortform_app_arn, shortform_file_prefix, corresp_ind,
// assoc_facility_id, network_affil, sat_tv_ind, comm_county, comm_zip1,
// comm_zip2, last_change_date.
namespace application {
constexpr std::size_t app_arn = 0, app_service = 1, application_id = 2, facility_id = 3, file_prefix = 4,
                      comm_city = 5, comm_state = 6, fac_callsign = 9;
constexpr std::size_t kMinFields = fac_callsign + 1;
}  // namespace application

// facility.dat: comm_city, comm_state, eeo_rpt_ind, fac_address1,
// fac_address2, fac_callsign, fac_channel, fac_city, fac_country,
// fac_frequency, fac_service, fac_state, fac_status_date, fac_type,
// facility_id, lic_expiration_date, fac_status, fac_zip1, fac_zip2,
// station_type, assoc_facility_id, callsign_eff_date, tsid_ntsc, tsid_dtv,
// digital_status, sat_tv, network_affil, nielsen_dma, tv_virtual_channel,
// last_change_date.
namespace facility {
constexpr std::size_t comm_city = 0, comm_state = 1, fac_callsign = 5, fac_country = 8, fac_service = 10,
                      facility_id = 14, fac_status = 16;
constexpr std::size_t kMinFields = fac_status + 1;
}  // namespace facility

// app_tracking.dat: application_id, app_status_date, cutoff_date,
// cutoff_type, cp_exp_date, app_status, dtv_checklist,
// amendment_stamped_date, accepted_date, tolling_code, last_change_date.
namespace app_tracking {
constexpr std::size_t application_id = 0, cutoff_date = 2, cp_exp_date = 4;
constexpr std::size_t kMinFields = cp_exp_date + 1;
}  // namespace app_tracking

// app_party.dat: application_id, party_id, party_type, cert_title,
// cert_date, other_fcc_id, party_notify_ind, party_relationship,
// sig_present_ind, sig_name, last_change_date.
// fac_party.dat: facility_id, party_id, party_type, last_change_date.
namespace party_link {
constexpr std::size_t key = 0, party_id = 1, party_type = 2;
constexpr std::size_t kMinFields = party_type + 1;
}  // namespace party_link

// party.dat: party_id, party_address1, party_address2, party_citizenship,
// party_city, party_company, party_country, party_email, party_fax,
// party_legal_name, party_name, party_phone, party_state, party_zip1,
// party_zip2, last_change_date.
namespace party {
constexpr std::size_t party_id = 0, party_address1 = 1, party_address2 = 2, party_city = 4, party_company = 5,
                      party_country = 6, party_email = 7, party_legal_name = 9, party_name = 10,
                      party_phone = 11, party_state = 12, party_zip1 = 13;
constexpr std::size_t kMinFields = party_zip1 + 1;
}  // namespace party

// am_ant_sys.dat: ant_mode, ant_sys_id, application_id, aug_count,
// bad_data_switch, domestic_pattern, dummy_data_switch,
// efficiency_restricted, efficiency_theoretical, feed_circ_other,
// feed_circ_type, hours_operation, lat_deg, lat_dir, lat_min, lat_sec,
// lon_deg, lon_dir, lon_min, lon_sec, q_factor, q_factor_custom_ind, power,
// rms_augmented, rms_standard, rms_theoretical, tower_count,
// eng_record_type, biased_lat, biased_long, mainkey, am_dom_status,
// lat_whole_secs, lon_whole_secs, ant_dir_ind, grandfathered_ind,
// specified_hrs_range, augmented_ind, last_change_date.
namespace am_ant_sys {
constexpr std::size_t ant_mode = 0, application_id = 2, lat_deg = 12, lat_dir = 13, lat_min = 14, lat_sec = 15,
                      lon_deg = 16, lon_dir = 17, lon_min = 18, lon_sec = 19, eng_record_type = 27;
constexpr std::size_t kMinFields = eng_record_type + 1;
}  // namespace am_ant_sys

// tv_eng_data.dat: ant_input_pwr, ant_max_pwr_gain, ant_polarization,
// antenna_id, antenna_type, application_id, asrn_na_ind, asrn, aural_freq,
// avg_horiz_pwr_gain, biased_lat, biased_long, border_code, carrier_freq,
// docket_num, effective_erp, electrical_deg, elev_amsl, elev_bldg_ag,
// eng_record_type, fac_zone, facility_id, freq_offset, gain_area,
// haat_rc_mtr, hag_overall_mtr, hag_rc_mtr, horiz_bt_erp, lat_deg, lat_dir,
// lat_min, lat_sec, lon_deg, lon_dir, lon_min, lon_sec, loss_area,
// max_ant_pwr_gain, max_erp_dbk, max_erp_kw, max_haat, mechanical_deg,
// multiplexor_loss, power_output_vis_dbk, power_output_vis_kw,
// predict_coverage_area, predict_pop, terrain_data_src_other,
// terrain_data_src, tilt_towards_azimuth, true_deg, tv_dom_status,
// upperband_freq, vert_bt_erp, visual_freq, vsd_service, rcamsl_horiz_mtr,
// ant_rotation, input_trans_line, max_erp_to_hor, trans_line_loss,
// lottery_group, analog_channel, lat_whole_secs, lon_whole_secs,
// max_erp_any_angle, station_channel, lic_ant_make, lic_ant_model_num,
// dt_emission_mask, site_number, elevation_antenna_id, last_change_date.
namespace tv_eng {
constexpr std::size_t application_id = 5, eng_record_type = 19, fac_zone = 20, facility_id = 21, lat_deg = 28,
                      lat_dir = 29, lat_min = 30, lat_sec = 31, lon_deg = 32, lon_dir = 33, lon_min = 34,
                      lon_sec = 35, station_channel = 66;
constexpr std::size_t kMinFields = station_channel + 1;
}  // namespace tv_eng

}  // namespace qarvel::importers::cdbs
